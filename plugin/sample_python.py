# coding: utf-8
"""Sample QIRO Lumen plug-in in Python.

For the written form it offers the form itself (with a link that looks it up
in Wikipedia) and the form in corner brackets (with double brackets as the
alternative to insert instead). Copy it and change qiro_plugin_run_process to
start a plug-in of your own.
"""

import sys
import urllib.parse


def character_kind(text):
    """A short description of the kind of characters the text is made of."""
    if all(0x3041 <= ord(c) <= 0x309F for c in text):
        return "ひらがな"
    if all(0x30A0 <= ord(c) <= 0x30FF for c in text):
        return "カタカナ"
    if all(0x4E00 <= ord(c) <= 0x9FFF for c in text):
        return "漢字"
    if all(ord(c) < 0x80 for c in text):
        return "半角英数"
    return "混在"


def qiro_plugin_run_process(request):
    hyoki = request.get("composition_string", "")
    reading = request.get("reading_string", "")
    if not hyoki:
        return {"candidate": []}
    lookup = "https://ja.wikipedia.org/wiki/" + urllib.parse.quote(hyoki)
    # A backslash followed by n in a plain comment becomes a line break.
    about = "Python のサンプルプラグインの候補です。\\n文字数: %d" % len(hyoki)
    if reading:
        about += "\\n読み: " + reading
    return {
        "candidate": [
            {
                "hyoki": hyoki,
                "comment": about,
                "alternative_type": "url_jump_string",
                "alternative": lookup,
                "alternative_alias": "Wikipedia で調べる",
                "info": character_kind(hyoki),
            },
            {
                "hyoki": "「" + hyoki + "」",
                "comment": "かぎ括弧で囲みました。\\n代替は二重かぎ括弧です。",
                "alternative_type": "definite_string",
                "alternative": "『" + hyoki + "』",
                "alternative_alias": "二重かぎ括弧",
                "info": "括弧付き",
            },
        ]
    }


def qiro_plugin_run_callback(request):
    # The callback's output is not read by the host; an author sees it in the panes.
    print("committed: %s (searched for %s)"
          % (request.get("candidate_string", ""), request.get("composition_string", "")))


def qiro_plugin_run_preference(request):
    # A real plug-in would show its settings or store them in this folder.
    print("settings folder: %s" % request.get("path", ""), file=sys.stderr)

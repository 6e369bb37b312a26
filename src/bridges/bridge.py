#! /usr/bin/python
# coding:utf-8
#
# QIRO Lumen スクリプトプラグイン Python ブリッジ
#
# 使い方:
#   python bridge.py プラグインファイル メソッド 引数...
# 引数はすべて URL エンコードされた UTF-8 (ポート番号だけは 10 進数のまま)。
# プラグインを読み込んでエントリ関数 qiro_plugin_<メソッド> を呼び出し、
# run_process の場合は返された候補を itemlist 文書にして標準出力へ書く。
# ブリッジ自身のエラーは決まった文字列を改行なしで出力して正常終了する。
# それ以外の失敗 (ファイルがない、例外など) はインタプリタのエラー出力に任せる。

import importlib.machinery
import importlib.util
import os
import re
import sys
import urllib.parse

# プラグインのフォルダに __pycache__ を残さない
sys.dont_write_bytecode = True

METHOD_NAMES = ("run_process", "syntax_check", "run_preference", "run_callback")

XML_DECLARATION = '<?xml version="1.0" encoding="UTF-8" ?>'
XHTML_START = '<html xmlns="http://www.w3.org/1999/xhtml">'
XHTML_META = '<meta http-equiv="Content-Type" content="text/html; charset=UTF-8" />'

# 制御文字 (0x00-0x1F, 0x7F) と、タブ・LF・CR を除いた制御文字
CONTROL_ALL = re.compile("[\\x00-\\x1f\\x7f]")
CONTROL_EXCEPT_LINES = re.compile("[\\x00-\\x08\\x0b\\x0c\\x0e-\\x1f\\x7f]")


def write_text(text):
    sys.stdout.write(text)


def url_decode(string):
    # "+" を空白に、"%XX" をバイトに戻してから UTF-8 として読む。
    # 不正なバイト列は置換文字になる。
    raw = os.fsencode(string).replace(b"+", b" ")
    return urllib.parse.unquote_to_bytes(raw).decode("utf-8", "replace")


def to_port(string):
    # 整数リテラルでなければ例外 (桁区切りの "_" も認めない)
    if "_" in string:
        raise ValueError("invalid literal for int() with base 10: %r" % string)
    return int(string)


def load_plugin(plugin_file):
    # ファイル名 (拡張子なし) をモジュール名とし、そのファイル自体から読み込む。
    # 大文字の拡張子 (Sample.PY など) でもそのまま読める。
    module_name = os.path.splitext(os.path.basename(plugin_file))[0]
    loader = importlib.machinery.SourceFileLoader(module_name, plugin_file)
    spec = importlib.util.spec_from_loader(module_name, loader)
    module = importlib.util.module_from_spec(spec)
    sys.modules[module_name] = module
    loader.exec_module(module)
    return module


def convert_string(string, ctrl, size):
    # 文字列でない値は空として扱う
    if not isinstance(string, str) or not isinstance(ctrl, bool):
        return ""
    # 文字数の制限はエスケープの前にかける
    if size != -1 and len(string) > size:
        string = string[:size]
    # "&" を最初に置き換えて、後で作った実体参照を二重にしない
    string = string.replace("&", "&amp;")
    string = string.replace("<", "&lt;")
    string = string.replace(">", "&gt;")
    string = string.replace("'", "&apos;")
    string = string.replace('"', "&quot;")
    if ctrl:
        return CONTROL_ALL.sub(" ", string)
    return CONTROL_EXCEPT_LINES.sub(" ", string)


def convert_field(item, key, ctrl, size):
    if key not in item:
        return ""
    return convert_string(item[key], ctrl, size)


def create_comment(hyoki, comment, comment_xhtml):
    if comment_xhtml != "":
        return comment_xhtml
    if comment == "":
        return ""
    # 「\n」の 2 文字を改行タグにし、見出し付きの XHTML 文書に包む。
    # 文書全体をもう一度エスケープするので、本文は二重にエスケープされる。
    body = comment.replace("\\n", "<br />")
    parts = (XML_DECLARATION, XHTML_START, "<head>", XHTML_META, "</head>", "<body>",
             "<h2>", hyoki, "</h2>", body, "</body></html>")
    return "".join(convert_string(part, True, -1) for part in parts)


def create_item(item):
    hyoki = convert_field(item, "hyoki", True, 100)
    comment = convert_field(item, "comment", False, 1024)
    comment_xhtml = convert_field(item, "comment_xhtml", False, 1024 * 10)
    alternative_type = convert_field(item, "alternative_type", True, -1)
    alternative_alias = convert_field(item, "alternative_alias", True, 100)
    info = convert_field(item, "info", True, 64)
    # 別名がなければ代替文字列の改行も空白にする
    alternative = convert_field(item, "alternative", alternative_alias == "", 512)

    # 長すぎるジャンプ先は切らずに捨てる
    if alternative_type == "url_jump_string" and "alternative" in item:
        raw = item["alternative"]
        if isinstance(raw, str) and len(raw) > 512:
            alternative = ""

    if hyoki == "":
        return ""

    xml = '\t<item type="script_candidate">\n'
    xml += "\t\t<title>" + hyoki + "</title>\n"
    comment = create_comment(hyoki, comment, comment_xhtml)
    if comment != "":
        xml += "\t\t<comment>" + comment + "</comment>\n"
    if alternative != "" and alternative_type in ("definite_string", "url_jump_string"):
        xml += '\t\t<alternative type="' + alternative_type + '">' + alternative \
            + "</alternative>\n"
    if alternative_alias != "":
        xml += "\t\t<alternative_alias>" + alternative_alias + "</alternative_alias>\n"
    if info != "":
        xml += "\t\t<info>" + info + "</info>\n"
    xml += "\t</item>\n"
    return xml


def create_xml(data):
    xml = XML_DECLARATION + "\n\n<itemlist>\n"
    if not isinstance(data, dict):
        return xml + "</itemlist>\n"
    # "candidate" がなければ KeyError
    candidates = data["candidate"]
    if not isinstance(candidates, list):
        return xml + "</itemlist>\n"
    # 先頭の 100 個だけを見る (飛ばした要素も数える)
    for position, item in enumerate(candidates):
        if position >= 100:
            break
        if not isinstance(item, dict):
            continue
        xml += create_item(item)
    return xml + "</itemlist>\n"


def make_request(first_key, second_key):
    # 処理とコールバックの要求: 位置 3 と 4 のキー名だけが違う
    request = {
        first_key: url_decode(sys.argv[3]),
        second_key: url_decode(sys.argv[4]),
        "proxy_name": url_decode(sys.argv[5]),
        "proxy_port": to_port(sys.argv[6]),
        "proxy_username": url_decode(sys.argv[7]),
        "proxy_password": url_decode(sys.argv[8]),
    }
    if len(sys.argv) == 10:
        request["path"] = url_decode(sys.argv[9])
    return request


def main():
    # スクリプト名も数えるので、引数が一つもないときだけ成り立つ
    if len(sys.argv) < 2:
        write_text("error : argument error.")
        return

    plugin_file = url_decode(sys.argv[1])
    method = url_decode(sys.argv[2])

    if method not in METHOD_NAMES:
        write_text("error : plugin method load error.")
        return

    if method == "syntax_check":
        write_text("syntax ok")
        return

    module = load_plugin(plugin_file)
    entry = getattr(module, "qiro_plugin_" + method)
    if not callable(entry):
        write_text("error : plugin module load error2.")
        return

    if method == "run_process":
        if len(sys.argv) != 9 and len(sys.argv) != 10:
            write_text("error : run_process() argument error.")
            return
        xml = create_xml(entry(make_request("composition_string", "reading_string")))
        # プラグイン自身の出力を先に書き出してから文書を UTF-8 で書く。
        # サロゲートの片割れは置き換えずにそのままのバイト列 (ED A0 80 など) で書く。
        sys.stdout.flush()
        sys.stdout.buffer.write(xml.encode("utf-8", "surrogatepass"))
        sys.stdout.buffer.flush()
    elif method == "run_preference":
        if len(sys.argv) != 4:
            write_text("error : run_preference() argument error.")
            return
        entry({"path": url_decode(sys.argv[3])})
    elif method == "run_callback":
        if len(sys.argv) != 9 and len(sys.argv) != 10:
            write_text("error : run_callback() argument error.")
            return
        entry(make_request("candidate_string", "composition_string"))


main()

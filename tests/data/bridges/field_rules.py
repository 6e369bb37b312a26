# Returns a fixed candidate list for each group name given as the written form.


def title_group():
    return [
        {"hyoki": "\u3042" * 120},
        {"hyoki": "a<b"},
        {"hyoki": "x" * 99 + "&"},
        {"hyoki": "y" * 100 + "<"},
        {"hyoki": "&<>'\"&amp;"},
        {"hyoki": "t\tl\nc\rz\x01\x1f\x7f\u0080\u00e9"},
        {"comment": "no title"},
        {"hyoki": ""},
        {"hyoki": "\t"},
    ]


def comment_group():
    return [
        {"hyoki": "both", "comment": "plain", "comment_xhtml": "<p>x</p>"},
        {"hyoki": "a&b", "comment": "x\\ny\tz\n"},
        {"hyoki": "kept", "comment_xhtml": "a\tb\nc\rd\x01e\\nf"},
        {"hyoki": "cut", "comment": "c" * 1030},
        {"hyoki": "cutx", "comment_xhtml": "d" * 10250},
        {"hyoki": "none", "comment": "", "comment_xhtml": ""},
        {"hyoki": "escaped", "comment": "<b>&"},
    ]


def alternative_group():
    return [
        {"hyoki": "u512", "alternative_type": "url_jump_string", "alternative": "h" * 512},
        {"hyoki": "u513", "alternative_type": "url_jump_string", "alternative": "h" * 513,
         "alternative_alias": "alias", "info": "info"},
        {"hyoki": "d513", "alternative_type": "definite_string", "alternative": "d" * 513},
        {"hyoki": "raw", "alternative_type": "url_jump_string", "alternative": "e" * 510 + "&&"},
        {"hyoki": "case", "alternative_type": "URL_JUMP_STRING", "alternative": "x",
         "alternative_alias": "al", "info": "in"},
        {"hyoki": "notype", "alternative": "x"},
        {"hyoki": "tab", "alternative_type": "definite_string", "alternative": "a\tb\nc"},
        {"hyoki": "tab alias", "alternative_type": "definite_string", "alternative": "a\tb\nc",
         "alternative_alias": "x\ty"},
        {"hyoki": "info", "info": "i" * 70},
        {"hyoki": "info ctrl", "info": "i\tj<"},
        {"hyoki": "alias only", "alternative_alias": "only"},
        {"hyoki": "typectl", "alternative_type": "definite_string\t", "alternative": "x"},
    ]


def wide_jump_group():
    return [
        {"hyoki": "wide", "alternative_type": "url_jump_string", "alternative": "\u3042" * 512},
        {"hyoki": "wide513", "alternative_type": "url_jump_string",
         "alternative": "\u3042" * 513},
    ]


def walk_group():
    candidates = []
    for position in range(150):
        if position == 2:
            candidates.append({"info": "no title"})
        else:
            candidates.append({"hyoki": "c%d" % position})
    return candidates


def late_group():
    return [{} for _ in range(100)] + [{"hyoki": "late"}]


def shapes_group():
    return ["text", 5, None, ["list"],
            {"hyoki": "ok", "comment": 5, "info": ["x"], "alternative_type": "definite_string",
             "alternative": 7},
            {"hyoki": 7}]


GROUPS = {
    "title": title_group,
    "comment": comment_group,
    "alternative": alternative_group,
    "alias_limit": lambda: [{"hyoki": "alias", "alternative_alias": "a" * 120}],
    "wide_jump": wide_jump_group,
    "walk": walk_group,
    "late": late_group,
    "shapes": shapes_group,
    "late_shapes": lambda: ["text"] * 100 + [{"hyoki": "late"}],
}


def qiro_plugin_run_process(request):
    group = request["composition_string"]
    if group == "not_a_list":
        return {"candidate": "x"}
    if group == "not_a_dict":
        return ["x"]
    if group == "no_candidate":
        return {"other": []}
    if group == "byte_strings":
        return {"candidate": [{"hyoki": b"x", "comment": b"c", "info": b"i"}, {"hyoki": b"y"}]}
    return {"candidate": GROUPS[group]()}

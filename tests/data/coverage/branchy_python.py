# A plug-in with a branch that no case takes: lines 8 and 9.


def describe(text):
    if text.startswith("a"):
        kind = "starts with a"
    else:
        kind = "other"
        kind = kind + "!"
    return kind


def qiro_plugin_run_process(request):
    text = request["composition_string"]
    return {"candidate": [{"hyoki": text, "comment": describe(text)}]}

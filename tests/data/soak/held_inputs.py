# Fails on a few held inputs: a table lookup that misses, and a slice past the end.
TABLE = {"あ": "a", "い": "i", "う": "u"}


def qiro_plugin_run_process(request):
    form = request["composition_string"]
    if form.startswith("%"):
        return {"candidate": [{"hyoki": TABLE[form[:1]]}]}
    if " " in form:
        raise ValueError("blank in " + "form")
    return {"candidate": [{"hyoki": form}]}

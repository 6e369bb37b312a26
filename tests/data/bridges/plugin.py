# Marks its loading and running, then returns the result spelled in JSON as the written form,
# or one candidate per request value.
import json
import sys

sys.stdout.write("[loaded]")


def describe(request):
    return ["%s=%s" % (key, request[key]) for key in sorted(request)]


def qiro_plugin_run_process(request):
    print("[run]")
    text = request["composition_string"]
    if text == "bytes":
        return {"candidate": [{"hyoki": b"x", "comment": b"c", "info": b"i"}, {"hyoki": b"y"}]}
    if text == "surrogate":
        return {"candidate": [{"hyoki": "a\ud800b\udc00"}]}
    if text.startswith(("{", "[")):
        return json.loads(text)
    candidates = [{"hyoki": line} for line in describe(request)]
    for candidate, key in zip(candidates, sorted(request)):
        if isinstance(request[key], int):
            candidate["info"] = "integer"
    return {"candidate": candidates}


def qiro_plugin_run_preference(request):
    sys.stdout.write("run_preference:" + ";".join(describe(request)))


def qiro_plugin_run_callback(request):
    sys.stdout.write("run_callback:" + ";".join(describe(request)))

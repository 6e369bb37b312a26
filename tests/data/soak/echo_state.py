# Returns the written form with a call counter: a fresh process (or fork) always says 1.
import sys

print("echo_state loaded", file=sys.stderr)
calls = 0


def qiro_plugin_run_process(request):
    global calls
    calls += 1
    form = request["composition_string"]
    return {"candidate": [
        {"hyoki": form, "comment": "call %d: %s / %s" % (calls, form, request["reading_string"]),
         "info": str(len(form))},
        {"hyoki": "%s#%d" % (form, calls), "alternative_type": "definite_string",
         "alternative": form * 3, "alternative_alias": form},
    ]}

# Hands the request back: one candidate per key for run_process, a printed line otherwise.
import sys


def describe(request):
    return ["%s=%s" % (key, request[key]) for key in sorted(request)]


def qiro_plugin_run_process(request):
    candidates = []
    for key in sorted(request):
        candidate = {"hyoki": "%s=%s" % (key, request[key])}
        if isinstance(request[key], int):
            candidate["info"] = "integer"
        candidates.append(candidate)
    return {"candidate": candidates}


def qiro_plugin_run_preference(request):
    sys.stdout.write("run_preference:" + ";".join(describe(request)))


def qiro_plugin_run_callback(request):
    sys.stdout.write("run_callback:" + ";".join(describe(request)))

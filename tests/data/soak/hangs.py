# Never answers: only the time-out ends it.
import sys
import time


def qiro_plugin_run_process(request):
    print("waiting", file=sys.stderr, flush=True)
    time.sleep(600)
    return {"candidate": []}

# Answers after a while: long enough to be interrupted in the middle of a soak.
import time


def qiro_plugin_run_process(request):
    time.sleep(0.3)
    return {"candidate": [{"hyoki": request["composition_string"]}]}

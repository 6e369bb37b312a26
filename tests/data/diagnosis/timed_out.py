import sys
import time


def qiro_plugin_run_process(request):
    sys.stderr.write("waiting for the server\n")
    sys.stderr.flush()
    time.sleep(40)

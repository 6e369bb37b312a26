# Kills its own interpreter in the middle of a run.
import os
import signal
import sys


def qiro_plugin_run_process(request):
    sys.stderr.write("about to die\n")
    sys.stderr.flush()
    os.kill(os.getpid(), signal.SIGKILL)

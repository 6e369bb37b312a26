# Fixture: writes its process id to the file named by the candidate, then hangs in its callback
# entry, which runs without time-out (hangs.xml enables it).
import os
import time


def qiro_plugin_run_callback(request):
    with open(request["candidate_string"], "w") as f:
        f.write(str(os.getpid()))
    time.sleep(300)

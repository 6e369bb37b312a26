# Never answers: records its process id, then sleeps.
import os
import time


def qiro_plugin_run_process(request):
    with open(os.environ["QIRO_TEST_ECHO_FILE"], "w") as echo_file:
        echo_file.write(str(os.getpid()))
    while True:
        time.sleep(3600)

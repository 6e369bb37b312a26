import os
import sys
def qiro_plugin_run_process(request):
    # Tells the test that the window ran it.
    open(os.path.join(os.environ["HOME"], "ran"), "w").close()
    sys.stderr.write("e" * (2 * 1024 * 1024) + "\n")
    return {'candidate': [{'hyoki': request['composition_string']}]}

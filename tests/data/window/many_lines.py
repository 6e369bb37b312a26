import os
import sys
def qiro_plugin_run_process(request):
    # Tells the test that the window ran it.
    open(os.path.join(os.environ["HOME"], "ran"), "w").close()
    line = "an ordinary line of output from a plug-in that talks a lot........\n"
    sys.stderr.write(line * (32 * 1024 * 1024 // len(line)))
    return {'candidate': [{'hyoki': request['composition_string']}]}

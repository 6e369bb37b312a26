import sys
def qiro_plugin_run_process(request):
    line = "an ordinary line of output from a plug-in that talks a lot........\n"
    sys.stderr.write(line * (32 * 1024 * 1024 // len(line)))
    return {'candidate': [{'hyoki': request['composition_string']}]}

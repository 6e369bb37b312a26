import sys
def qiro_plugin_run_process(request):
    sys.stderr.write("e" * (2 * 1024 * 1024) + "\n")
    return {'candidate': [{'hyoki': request['composition_string']}]}

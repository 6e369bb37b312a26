import sys


def qiro_plugin_run_process(request):
    sys.stdout.write("x" * (65 * 1024 * 1024))
    return {"candidate": []}

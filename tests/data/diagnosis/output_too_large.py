import sys


def qiro_plugin_run_process(request):
    sys.stdout.write("x\n" * (6 * 1024 * 1024))
    return {"candidate": [{"hyoki": "x"}]}

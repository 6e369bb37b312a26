# Writes to standard output while it loads and while it runs.
import sys

sys.stdout.write("[loading]")


def qiro_plugin_run_process(request):
    print("[running]")
    return {"candidate": [{"hyoki": "noise"}]}


def qiro_plugin_run_preference(request):
    sys.stdout.write("[preference]")


def qiro_plugin_run_callback(request):
    sys.stdout.write("[callback]")

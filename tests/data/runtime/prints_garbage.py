# Writes text of its own into the result document.
import sys


def qiro_plugin_run_process(request):
    sys.stdout.write("garbage <<< not a document")
    return {"candidate": [{"hyoki": "lost"}]}

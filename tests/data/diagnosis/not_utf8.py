import sys


def qiro_plugin_run_process(request):
    sys.stderr.buffer.write(b"\x82\xa0\n")
    sys.stderr.flush()
    return {"candidate": [{"hyoki": "x"}]}

# Fixture: prints Shift_JIS bytes beside its result, which ends the run.
import sys


def qiro_plugin_run_process(request):
    sys.stdout.buffer.write(b"\x82\xa0\n")
    sys.stdout.flush()
    return {"candidate": [{"hyoki": "x"}]}

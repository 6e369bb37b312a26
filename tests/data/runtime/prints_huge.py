# Writes 65 MiB to standard output, more than the host keeps.
import os


def qiro_plugin_run_process(request):
    chunk = b"x" * (1 << 20)
    for _ in range(65):
        os.write(1, chunk)
    return {"candidate": [{"hyoki": "after the flood"}]}

# Misbehaves in the way its written form names.
import os
import signal
import sys


def qiro_plugin_run_process(request):
    how = request["composition_string"]
    if how == "garbage":
        # A document follows, but the output does not start with it.
        sys.stdout.write("garbage <<< not a document")
    elif how == "not utf-8":
        os.write(1, b'<?xml version="1.0" encoding="UTF-8" ?>\n<itemlist>\xff\xfe\x80</itemlist>\n')
        os._exit(0)
    elif how == "flood":
        # One MiB over the cap on standard output.
        for _ in range(65):
            os.write(1, b"x" * (1 << 20))
    elif how == "killed":
        sys.stderr.write("about to die\n")
        sys.stderr.flush()
        os.kill(os.getpid(), signal.SIGKILL)
    return {"candidate": [{"hyoki": "lost"}]}

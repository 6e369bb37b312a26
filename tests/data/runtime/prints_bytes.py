# Writes bytes that are not UTF-8 where the result document should be.
import os


def qiro_plugin_run_process(request):
    os.write(1, b"<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<itemlist>\xff\xfe\x80</itemlist>\n")
    os._exit(0)

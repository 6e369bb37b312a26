# coding:utf-8
# Writes what it was started with to the file named by QIRO_TEST_ECHO_FILE and offers the
# written form back as its only candidate.
import os
import sys


def echo(method, request):
    lines = ["method:" + method]
    lines += ["argv:" + argument for argument in sys.orig_argv]
    lines.append("cwd:" + os.getcwd())
    lines += ["request:%s=%s" % (key, request[key]) for key in sorted(request)]
    with open(os.environ["QIRO_TEST_ECHO_FILE"], "w", encoding="utf-8") as echo_file:
        echo_file.write("\n".join(lines) + "\n")


def qiro_plugin_run_process(request):
    echo("run_process", request)
    return {"candidate": [{"hyoki": request["composition_string"]}]}

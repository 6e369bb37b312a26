# coding:utf-8
# Writes how it was started to the file named by QIRO_TEST_ECHO_FILE; offers the written form.
import os
import sys


def echo(method, request):
    lines = ["method:" + method, "cwd:" + os.getcwd()] + ["argv:" + a for a in sys.orig_argv]
    lines += ["request:%s=%s" % (key, request[key]) for key in sorted(request)]
    with open(os.environ["QIRO_TEST_ECHO_FILE"], "w", encoding="utf-8") as echo_file:
        echo_file.write("\n".join(lines) + "\n")


def qiro_plugin_run_process(request):
    echo("run_process", request)
    return {"candidate": [{"hyoki": request["composition_string"]}]}


def qiro_plugin_run_callback(request):
    echo("run_callback", request)


def qiro_plugin_run_preference(request):
    echo("run_preference", request)
    with open(os.path.join(request["path"], "preference.txt"), "w", encoding="utf-8") as stored:
        stored.write("stored")

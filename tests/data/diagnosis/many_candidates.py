import os


def qiro_plugin_run_process(request):
    count = int(os.environ["QIRO_TEST_CANDIDATES"])
    return {"candidate": [{"hyoki": "c%d" % index} for index in range(count)]}

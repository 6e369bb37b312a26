import qiro_no_such_module


def qiro_plugin_run_process(request):
    return {"candidate": []}

# Does not compile.
def qiro_plugin_run_process(request)
    return {"candidate": []}

def qiro_plugin_run_process(request):
    return {"candidate": [

def broken(:
    pass

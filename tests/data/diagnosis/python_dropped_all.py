def qiro_plugin_run_process(request):
    return {"candidate": [{"comment": "no title"}, {"comment": "no title either"}]}

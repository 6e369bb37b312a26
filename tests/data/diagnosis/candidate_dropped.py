def qiro_plugin_run_process(request):
    return {"candidate": [{"comment": "no written form"}, {"hyoki": 42}]}

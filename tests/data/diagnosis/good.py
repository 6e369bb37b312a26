def qiro_plugin_run_process(request):
    return {"candidate": [{"hyoki": request["composition_string"]}]}

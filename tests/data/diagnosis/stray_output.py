def qiro_plugin_run_process(request):
    print("looking up", request["composition_string"])
    return {"candidate": [{"hyoki": "x"}]}

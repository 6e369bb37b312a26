def qiro_plugin_run_process(request):
    kept = [{"hyoki": request["composition_string"]}]
    return {"candidate": kept + [{"comment": "no title"} for _ in range(30)]}

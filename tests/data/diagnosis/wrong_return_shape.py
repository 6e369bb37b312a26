def qiro_plugin_run_process(request):
    return [{"hyoki": "x"}]

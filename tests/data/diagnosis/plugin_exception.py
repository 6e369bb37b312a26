def helper(text):
    return len(text) / 0


def qiro_plugin_run_process(request):
    return {"candidate": [{"hyoki": helper(request["composition_string"])}]}

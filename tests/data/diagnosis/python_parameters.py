# The entry forgot the request.

def qiro_plugin_run_process():
    return {"candidate": [{"hyoki": "x"}]}

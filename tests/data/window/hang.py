import time
def qiro_plugin_run_process(request):
    time.sleep(60)
    return {'candidate': []}

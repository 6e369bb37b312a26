def walk(depth):
    return walk(depth + 1)


def qiro_plugin_run_process(request):
    return walk(0)

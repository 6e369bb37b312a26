# Fixture: fails inside its entry.


def qiro_plugin_run_process(request):
    raise ValueError("fixture failure for " + request["composition_string"])

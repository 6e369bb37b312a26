# Saved in Shift_JIS by mistake.
TITLE = "‚ "


def qiro_plugin_run_process(request):
    return {"candidate": [{"hyoki": TITLE}]}

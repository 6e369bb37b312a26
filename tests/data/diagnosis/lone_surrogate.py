def qiro_plugin_run_process(request):
    # Half of the pair of U+1F600, as text cut between its two UTF-16 units leaves it.
    return {"candidate": [{"hyoki": "smile \ud83d"}]}

def qiro_plugin_run_process(request):
    word = input("word? ")
    return {"candidate": [{"hyoki": word}]}

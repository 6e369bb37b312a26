def qiro_plugin_run_process(request):
    with open("qiro_words_not_there.txt", encoding="utf-8") as words:
        return {"candidate": [{"hyoki": line.strip()} for line in words]}

def run_process(request):
    return {"candidate": [{"hyoki": "x"}]}

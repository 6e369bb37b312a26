# Starts a thread while it loads: a fork would copy only the calling thread.
import threading
import time

threading.Thread(target=lambda: time.sleep(600), daemon=True).start()


def qiro_plugin_run_process(request):
    return {"candidate": [{"hyoki": request["composition_string"]}]}

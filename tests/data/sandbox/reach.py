# Fixture: tries what a confined plug-in must not do and says, one candidate per attempt, what
# worked. The written form is the port of a listener on 127.0.0.1.
import os
import socket


def attempt(name, action):
    try:
        action()
        return {"hyoki": name + ":ok"}
    except Exception:
        return {"hyoki": name + ":denied"}


def write_and_remove(path):
    with open(path, "w") as f:
        f.write("x")
    os.remove(path)


def qiro_plugin_run_process(request):
    home = os.environ["HOME"]
    port = int(request["composition_string"])
    own = os.path.dirname(os.path.abspath(__file__))
    return {"candidate": [
        attempt("read", lambda: open(home + "/secret.txt").read()),
        attempt("write", lambda: write_and_remove(own + "/written.txt")),
        attempt("escape", lambda: open(home + "/escaped.txt", "w").write("x")),
        attempt("data", lambda: write_and_remove("written.txt")),
        attempt("connect", lambda: socket.create_connection(("127.0.0.1", port), 2).close()),
    ]}

# Written as sitecustomize.py into a private folder put first on PYTHONPATH for the one command
# of a plug-in run that is debugged. Python imports it at start-up, before the bridge runs.
#
# QIRO_LUMEN_DEBUG_PYTHON holds "dap PORT" (debugpy listens on 127.0.0.1:PORT and waits for an
# editor) or "console PORT" (pdb talks over a connection to 127.0.0.1:PORT, which the tool
# relays to the terminal). Everything this file adds to the environment is taken out again
# before anything else starts: debugpy's adapter is a child Python that inherits the
# environment, and with the trigger still there it would start an adapter of its own, and so on.

import os
import sys


def _qiro_lumen_forget_self():
    folder = os.path.dirname(os.path.abspath(__file__))
    trigger = os.environ.pop("QIRO_LUMEN_DEBUG_PYTHON", None)
    mark = os.environ.pop("QIRO_LUMEN_DEBUG_ADAPTER", None)
    original = os.environ.pop("QIRO_LUMEN_DEBUG_PYTHONPATH", None)
    if original is None:
        os.environ.pop("PYTHONPATH", None)
    else:
        os.environ["PYTHONPATH"] = original
    sys.path[:] = [entry for entry in sys.path if os.path.abspath(entry or ".") != folder]
    # A sitecustomize of the system that this file hides still runs, as it would without us.
    import importlib.machinery
    import importlib.util
    spec = importlib.machinery.PathFinder.find_spec("sitecustomize", sys.path)
    if spec is not None and spec.loader is not None:
        module = importlib.util.module_from_spec(spec)
        sys.modules["sitecustomize"] = module
        spec.loader.exec_module(module)
    return trigger, mark


def _qiro_lumen_without_std_streams(action):
    # The adapter keeps the descriptors 0 to 2 it inherits, and outlives the plug-in while an
    # editor stays attached: with the command's pipes it would keep the run from ending.
    sys.stdout.flush()
    sys.stderr.flush()
    saved = [os.dup(fd) for fd in (0, 1, 2)]
    null = os.open(os.devnull, os.O_RDWR)
    try:
        for fd in (0, 1, 2):
            os.dup2(null, fd)
        action()
    finally:
        for fd, original in zip((0, 1, 2), saved):
            os.dup2(original, fd)
            os.close(original)
        os.close(null)


def _qiro_lumen_listen(port, mark):
    before = dict(os.environ)
    # Without it, debugpy warns about frozen modules on standard error, which the author would
    # read as the plug-in's own output.
    os.environ["PYDEVD_DISABLE_FILE_VALIDATION"] = "1"
    # The adapter, which makes itself a daemon outside the command's process group, carries the
    # mark so that the tool can find it once the run is over; nothing else does.
    if mark:
        os.environ["QIRO_LUMEN_DEBUG_ADAPTER"] = mark
    try:
        import debugpy
        _qiro_lumen_without_std_streams(lambda: debugpy.listen(("127.0.0.1", port)))
    finally:
        # What was set for debugpy, or by it, was read by now; the plug-in sees the
        # environment it would see without a debugger.
        for name in [name for name in os.environ if name not in before]:
            del os.environ[name]
        os.environ.update(before)
    # No stop of our own: the editor's breakpoints are set before the bridge goes on.
    debugpy.wait_for_client()


def _qiro_lumen_console(port, plugin_path):
    import pdb
    import socket
    connection = socket.create_connection(("127.0.0.1", port))
    stream = connection.makefile("rw", buffering=1, encoding="utf-8", errors="replace")
    class Console(pdb.Pdb):
        # The connection closes when the terminal does: the debugging ends, the run goes on.
        def do_EOF(self, argument):
            self.message("")
            self.clear_all_breaks()
            return self.do_continue(argument)

    debugger = Console(stdin=stream, stdout=stream)
    debugger.use_rawinput = False
    target = os.path.realpath(plugin_path)

    # The first stop is the plug-in's first line, not this file nor the bridge.
    def wait_for_plugin(frame, event, argument):
        if event == "call" and os.path.realpath(frame.f_code.co_filename) == target:
            sys.settrace(None)
            debugger.set_trace(frame)
            return debugger.trace_dispatch
        return None

    sys.settrace(wait_for_plugin)


def _qiro_lumen_debug():
    trigger, mark = _qiro_lumen_forget_self()
    if not trigger:
        return
    mode, _, rest = trigger.partition(" ")
    port, _, plugin_path = rest.partition(" ")
    if mode == "dap":
        _qiro_lumen_listen(int(port), mark)
    elif mode == "console":
        _qiro_lumen_console(int(port), plugin_path)


_qiro_lumen_debug()

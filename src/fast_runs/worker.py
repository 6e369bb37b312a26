# QIRO Lumen fork worker for Python plug-ins (soak's fast mode).
#
#   python worker.py BRIDGE_FILE PLUGIN_ARGUMENT      (control: fd 3 in, fd 4 out)
#
# Loads the bridge's functions (everything but its final "main()" call) and the plug-in once,
# then for each request has a child forked from that state run the bridge's own main() with the
# request's argument list, so that each input meets a fresh copy of the loaded plug-in. What the
# plug-in printed while it loaded is written again at the start of each child's outputs, where a
# separate run would print it. The host enforces the time-out and the output cap on the two
# outputs it gives each request.
#
# Control lines, tab-separated:
#   worker -> host  "ready<TAB>outputs" | "ready" | "fallback<TAB>REASON"   once, after loading
#   host -> worker  "run<TAB>OUT<TAB>ERR<TAB>FOLDER<TAB>ARG0<TAB>ARG1..."
#   worker -> host  "exit<TAB>N<TAB>STATUS" for each child N (128 + signal for a signal)
# After "ready<TAB>outputs" (this worker), each waiting child names itself, "child<TAB>N", and the
# host attaches the two outputs to the request line as descriptors (OUT and ERR are "-"). After
# "ready" (the Perl and Ruby workers), OUT and ERR are paths that the child opens (the host's
# pipes under /proc/PID/fd, or FIFOs), and the child then names itself, "pid<TAB>N", or says
# "error<TAB>REASON" instead of that and its exit.
# A child reports its own exit just before it ends, and the worker reports it again once it has
# reaped it: the host takes the first report and passes over a report of a child it is not
# waiting for. So the host need not wait for the child's memory to be torn down, yet learns of
# a child that a signal ended.
# The worker serves one request at a time. Each child is forked before its request arrives and
# reads it from the control input itself, so that the fork's cost overlaps the host's work on
# the previous run and no third process wakes up between the host and the child; a child still
# takes exactly one request, from the loaded state, so the worker has at most one child running
# and one waiting.

import ast
import atexit
import builtins
import gc
import os
import sys
import types


def send(control, line):
    control.write((line + "\n").encode("utf-8", "surrogateescape"))
    control.flush()


def capture_load(load, plugin_file, folder):
    # The plug-in's outputs while it loads, as bytes of standard output and standard error, kept
    # in files of the worker's private folder (the host removes it).
    sys.stdout.flush()
    sys.stderr.flush()
    saved = (os.dup(1), os.dup(2))
    paths = (os.path.join(folder, "load.out"), os.path.join(folder, "load.err"))
    files = [os.open(path, os.O_RDWR | os.O_CREAT | os.O_EXCL, 0o600) for path in paths]
    try:
        os.dup2(files[0], 1)
        os.dup2(files[1], 2)
        try:
            module = load(plugin_file)
        finally:
            sys.stdout.flush()
            sys.stderr.flush()
            os.dup2(saved[0], 1)
            os.dup2(saved[1], 2)
        outputs = []
        for path in paths:
            with open(path, "rb") as handle:
                outputs.append(handle.read())
        return module, outputs
    finally:
        for fd in list(saved) + files:
            os.close(fd)
        for path in paths:
            os.unlink(path)


def started_threads():
    # Without importing threading: a plug-in that started a thread has imported it.
    threading = sys.modules.get("threading")
    if threading is not None and threading.active_count() > 1:
        return True
    return len(os.listdir("/proc/self/task")) > 1


def write_all(fd, data):
    while data:
        data = data[os.write(fd, data):]


def exit_code_of(error):
    # The interpreter's own rule for an uncaught SystemExit.
    code = error.code
    if code is None:
        return 0
    if isinstance(code, int):
        return code & 0xFF
    try:
        sys.stderr.write(str(code) + "\n")
    except Exception:
        pass
    return 1


def take_request(control):
    # The request line and the two outputs attached to it, as descriptors.
    data, ancillary, _flags, _address = control.recvmsg(65536, SOCKET[0].CMSG_SPACE(2 * 4))
    outputs = []
    for level, kind, payload in ancillary:
        if level == SOCKET[0].SOL_SOCKET and kind == SOCKET[0].SCM_RIGHTS:
            usable = len(payload) - len(payload) % 4
            outputs += [int.from_bytes(payload[at:at + 4], sys.byteorder, signed=True)
                        for at in range(0, usable, 4)]
    while data and not data.endswith(b"\n"):
        chunk = os.read(3, 65536)
        if not chunk:
            break
        data += chunk
    return data.rstrip(b"\n"), outputs


def read_line(fd):
    # One line from a pipe, without its end; what came before the end of file otherwise.
    data = b""
    while not data.endswith(b"\n"):
        chunk = os.read(fd, 65536)
        if not chunk:
            break
        data += chunk
    return data.rstrip(b"\n")


def run_child(request, outputs, start_code, namespace):
    folder = request[3]
    out_fd, err_fd = outputs
    os.dup2(out_fd, 1)
    os.dup2(err_fd, 2)
    for fd in (out_fd, err_fd):
        os.close(fd)
    os.chdir(folder)
    sys.argv = request[4:]
    code = 0
    try:
        exec(start_code, namespace)
    except SystemExit as error:
        code = exit_code_of(error)
    except BaseException:
        kind, value, trace = sys.exc_info()
        # The traceback starts where a separate run's would: at the bridge's "main()" line.
        value.__traceback__ = trace.tb_next
        sys.excepthook(kind, value, trace.tb_next)
        code = 1
    try:
        atexit._run_exitfuncs()
    except BaseException:
        pass
    try:
        sys.stdout.flush()
    except BaseException:
        code = 120
    try:
        sys.stderr.flush()
    except BaseException:
        pass
    report_exit(code)
    os._exit(code)


def report_exit(code):
    # Not from a process the plug-in forked: it is not the child the host waits for.
    if os.getpid() != CHILD_PID[0]:
        return
    try:
        write_all(4, b"exit\t%d\t%d\n" % (CHILD_PID[0], code))
    except OSError:
        pass
    # The host sees both outputs end now, not after the kernel has freed the child's memory.
    for fd in (1, 2, 4):
        try:
            os.close(fd)
        except OSError:
            pass


def wait_for_request(answer_fd, start_code, namespace):
    # Its own group and named to the host before its request, so that the host, which knows it
    # already, reads the run's outputs as soon as it has sent the request, and a time-out's kill
    # reaches it.
    os.setpgid(0, 0)
    CHILD_PID[0] = os.getpid()
    write_all(4, b"child\t%d\n" % CHILD_PID[0])
    # The request comes straight from the host: the worker does not pass it on, so it need not
    # wake up between the host and the child. Only this child reads the control input now; the
    # next is forked once this one has taken its line, and the host sends nothing more before
    # this child's run has ended.
    control = SOCKET[0].socket(fileno=3)
    try:
        line, outputs = take_request(control)
    except OSError:
        line, outputs = b"", []
    control.close()
    if not line:
        os._exit(0)
    for fd in outputs:
        os.set_blocking(fd, True)
    write_all(answer_fd, b"ok\n")
    os.close(answer_fd)
    # Kept for the exit report, but not handed to what the plug-in starts.
    os.set_inheritable(4, False)
    request = os.fsdecode(line).split("\t")
    if len(request) < 5 or request[0] != "run" or len(outputs) != 2:
        if len(outputs) == 2:
            write_all(outputs[1], b"worker: bad request\n")
        report_exit(1)
        os._exit(1)
    run_child(request, outputs, start_code, namespace)


# The pid of this process once it is a child waiting for its request.
CHILD_PID = [0]
# The socket module, kept out of sys.modules when the plug-in had not imported it.
SOCKET = [None]


def fork_child(start_code, namespace):
    # A child that waits for its request: its pid and the pipe on which it says it took one.
    answer_read, answer_write = os.pipe()
    sys.stdout.flush()
    sys.stderr.flush()
    pid = os.fork()
    if pid == 0:
        try:
            os.close(answer_read)
            wait_for_request(answer_write, start_code, namespace)
        finally:
            os._exit(1)
    os.close(answer_write)
    return pid, answer_read


def reap(pid):
    while True:
        try:
            return os.waitpid(pid, 0)[1]
        except InterruptedError:
            continue


def status_of(wait_status):
    if os.WIFSIGNALED(wait_status):
        return 128 + os.WTERMSIG(wait_status)
    return os.WEXITSTATUS(wait_status)


def main():
    control_out = os.fdopen(4, "wb", buffering=0)
    bridge_file, plugin_argument = sys.argv[1], sys.argv[2]
    with open(bridge_file, "rb") as handle:
        source = handle.read()
    tree = ast.parse(source, bridge_file)
    last = tree.body[-1] if tree.body else None
    if not (isinstance(last, ast.Expr) and isinstance(last.value, ast.Call)
            and isinstance(last.value.func, ast.Name) and last.value.func.id == "main"):
        send(control_out, "fallback\tthe bridge does not end with main()")
        return
    tree.body.pop()
    start_code = compile(ast.Module(body=[last], type_ignores=[]), bridge_file, "exec")

    # The bridge runs as the main module, as it does when started on its own.
    module = types.ModuleType("__main__")
    module.__file__ = bridge_file
    module.__builtins__ = builtins
    sys.modules["__main__"] = module
    sys.path[0] = os.getcwd()
    namespace = module.__dict__
    exec(compile(tree, bridge_file, "exec"), namespace)

    plugin_file = namespace["url_decode"](plugin_argument)
    load = namespace["load_plugin"]
    try:
        loaded, replay = capture_load(load, plugin_file, os.path.dirname(bridge_file))
    except BaseException as error:
        send(control_out, "fallback\tthe plug-in does not load: %s" % type(error).__name__)
        return
    if started_threads():
        send(control_out, "fallback\tthe plug-in starts threads while it loads")
        return

    def cached_load(path):
        if path != plugin_file:
            return load(path)
        write_all(1, replay[0])
        write_all(2, replay[1])
        return loaded

    namespace["load_plugin"] = cached_load
    # What is loaded now stays out of the collector's way, so that a child's collections do not
    # touch (and copy) every page the fork shares with the worker.
    had_socket = "_socket" in sys.modules
    SOCKET[0] = __import__("_socket")
    if not had_socket:
        del sys.modules["_socket"]
    gc.collect()
    gc.freeze()
    send(control_out, "ready\toutputs")

    serve(control_out, start_code, namespace)


def serve(control_out, start_code, namespace):
    # The worker never reads the control input itself: each waiting child takes the next
    # request from it, and says so on its answer pipe.
    waiting = fork_child(start_code, namespace)
    while True:
        pid, answer_read = waiting
        answer = read_line(answer_read)
        os.close(answer_read)
        if answer == b"ok":
            # The next child is forked while this one runs.
            waiting = fork_child(start_code, namespace)
            status = status_of(reap(pid))
            send(control_out, "exit\t%d\t%d" % (pid, status))
            continue
        # The host closed the control input, or the child ended before it took a request:
        # either way the worker ends, and the host sees it end.
        reap(pid)
        return

main()

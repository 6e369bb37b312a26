#!/usr/bin/env python3
"""What --debug costs: "qiro-lumen run --debug=PORT SAMPLE 変換" with a client that attaches and
lets the plug-in go at once (DAP initialize, attach, configurationDone for Python and Ruby; "c"
at the first stop of Perl's console), against a plain "qiro-lumen run SAMPLE 変換", alternately in
one loop so that both meet the same load. The plug-in's own work is the same on both sides, so the
difference of the medians is what debugging adds before the plug-in runs: the debugger check, the
helper files, the interpreter's debugger starting, and the client's handshake.

Usage: bench/debug_run_bench.py [BUILD_DIR] [RUNS]"""

import json
import os
import shutil
import socket
import statistics
import subprocess
import sys
import tempfile
import time

root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
build = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "build"))
runs = int(sys.argv[2]) if len(sys.argv) > 2 else 20
program = os.path.join(build, "bin", "qiro-lumen")
plugins = os.path.join(build, "bin", "plugin")
scratch = tempfile.mkdtemp()
environment = dict(os.environ, PATH="/usr/bin:/bin", LC_ALL="C.UTF-8", HOME=scratch + "/home",
                   QIRO_MACHINE_PREFERENCES_DIR=scratch + "/machine")
os.makedirs(environment["HOME"])
os.makedirs(environment["QIRO_MACHINE_PREFERENCES_DIR"])


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def connect(port, deadline):
    while time.monotonic() < deadline:
        try:
            return socket.create_connection(("127.0.0.1", port))
        except OSError:
            time.sleep(0.002)
    raise RuntimeError("nothing listens on %d" % port)


def dap_let_go(connection):
    stream = connection.makefile("rb")
    for seq, (command, arguments) in enumerate(
            [("initialize", {"adapterID": "bench"}), ("attach", {"justMyCode": False}),
             ("configurationDone", {})], 1):
        body = json.dumps({"seq": seq, "type": "request", "command": command,
                           "arguments": arguments}).encode()
        connection.sendall(b"Content-Length: %d\r\n\r\n" % len(body) + body)
    while True:  # until configurationDone is answered
        length = 0
        for line in iter(stream.readline, b"\r\n"):
            if not line:
                return
            if line.lower().startswith(b"content-length:"):
                length = int(line.split(b":")[1])
        message = json.loads(stream.read(length))
        if message.get("command") == "configurationDone":
            return


def console_let_go(connection):
    seen = b""
    while b"run_process(" not in seen or not seen.rstrip().endswith(b">"):
        chunk = connection.recv(4096)
        if not chunk:
            return
        seen += chunk
    connection.sendall(b"c\n")


def timed(arguments, client=None):
    started = time.monotonic()
    process = subprocess.Popen([program] + arguments, env=environment, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    connection = None
    if client:
        port, let_go = client
        connection = connect(port, started + 60)
        let_go(connection)
    process.wait(timeout=60)
    elapsed = time.monotonic() - started
    if connection:
        connection.close()
    return elapsed * 1000


print("| Sample | plain run | run --debug, client attached | cost of --debug |")
print("|---|---|---|---|")
for sample, let_go in (("sample_python.py", dap_let_go), ("sample_ruby.rb", dap_let_go),
                       ("sample_perl.pl", console_let_go)):
    plain, debugged = [], []
    for index in range(runs + 2):
        port = free_port()
        a = timed(["run", "--plugin-folder", plugins, sample, "変換"])
        b = timed(["run", "--debug=%d" % port, "--plugin-folder", plugins, sample, "変換"],
                  (port, let_go))
        if index >= 2:  # warm-up pairs
            plain.append(a)
            debugged.append(b)
    cost = statistics.median(b - a for a, b in zip(plain, debugged))
    print("| %s | %.1f ms | %.1f ms | %.1f ms |" % (sample, statistics.median(plain),
                                                    statistics.median(debugged), cost))
shutil.rmtree(scratch)

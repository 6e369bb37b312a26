# Author-side probe of a Python plug-in for the QIRO Lumen debugger.
#
# It is not the bridge: it runs the plug-in a second time, after a run that failed or returned
# no candidate, to see what the faithful run cannot show. It compiles the file, loads it as
# the bridge does, calls the entry with the same request, and prints one line
# "QIRO-PROBE:" followed by a JSON object: the compile and load results, whether the entry
# exists, what it raised or returned, and what the bridge's per-field rules keep of each
# candidate. Arguments: plug-in file, method, then the request values (URL-encoded UTF-8,
# the port as digits), in the bridge's order.

import importlib.machinery
import importlib.util
import inspect
import json
import os
import sys
import traceback
import urllib.parse

sys.dont_write_bytecode = True

MARK = "QIRO-PROBE:"
# Field, limit in characters (-1: none), and whether an over-long value is dropped, not cut.
FIELDS = (("hyoki", 100), ("comment", 1024), ("comment_xhtml", 10240),
          ("alternative_type", -1), ("alternative_alias", 100), ("info", 64),
          ("alternative", 512))
CANDIDATE_LIMIT = 100


def url_decode(string):
    raw = os.fsencode(string).replace(b"+", b" ")
    return urllib.parse.unquote_to_bytes(raw).decode("utf-8", "replace")


def emit(report, stream):
    stream.write("\n" + MARK + json.dumps(report, ensure_ascii=True) + "\n")
    stream.flush()


def failure(error, plugin_file):
    # The innermost frame in the plug-in's own file, where the author has to look.
    where = {"file": None, "line": None}
    for frame in traceback.extract_tb(error.__traceback__):
        if os.path.abspath(frame.filename) == plugin_file:
            where = {"file": frame.filename, "line": frame.lineno}
    message = "".join(traceback.format_exception_only(type(error), error)).strip()
    return dict({"ok": False, "type": type(error).__name__, "message": message}, **where)


def type_name(value):
    return "None" if value is None else type(value).__name__


def shape(value):
    result = {"type": type_name(value), "keys": None, "candidate": None, "ok": False}
    if isinstance(value, dict):
        result["keys"] = [str(key) for key in list(value)[:20]]
        if "candidate" in value:
            result["candidate"] = type_name(value["candidate"])
            result["ok"] = isinstance(value["candidate"], list)
    return result


def check_candidates(value):
    findings = []
    if not isinstance(value, dict) or not isinstance(value.get("candidate"), list):
        return findings
    for index, item in enumerate(value["candidate"]):
        if index >= CANDIDATE_LIMIT:
            findings.append({"index": index, "kept": False, "field": None,
                             "reason": "beyond_limit", "limit": CANDIDATE_LIMIT})
            break
        if not isinstance(item, dict):
            findings.append({"index": index, "kept": False, "field": None,
                             "reason": "not_mapping", "type": type_name(item)})
            continue
        for field, limit in FIELDS:
            if field not in item:
                if field == "hyoki":
                    findings.append({"index": index, "kept": False, "field": field,
                                     "reason": "missing"})
                continue
            text = item[field]
            if not isinstance(text, str):
                findings.append({"index": index, "kept": field != "hyoki", "field": field,
                                 "reason": "wrong_type", "type": type_name(text)})
            elif field == "hyoki" and text == "":
                findings.append({"index": index, "kept": False, "field": field,
                                 "reason": "empty"})
            elif limit != -1 and len(text) > limit:
                dropped = field == "alternative" and item.get("alternative_type") == "url_jump_string"
                findings.append({"index": index, "kept": True, "field": field,
                                 "reason": "dropped_over_limit" if dropped else "cut",
                                 "length": len(text), "limit": limit})
    return findings


def declared(function, plugin_file):
    # The line that declares the function in the plug-in, stripped, with its number.
    code = getattr(function, "__code__", None)
    if code is None or os.path.abspath(code.co_filename) != plugin_file:
        return None
    try:
        with open(plugin_file, encoding="utf-8", errors="replace") as source:
            lines = source.read().splitlines()
        for number in range(code.co_firstlineno, min(code.co_firstlineno + 20, len(lines) + 1)):
            if lines[number - 1].lstrip().startswith(("def ", "async def ")):
                return {"line": number, "found": lines[number - 1].strip()}
        return {"line": code.co_firstlineno, "found": lines[code.co_firstlineno - 1].strip()}
    except (OSError, IndexError):
        return None


def entry_shape(module, name, entry, plugin_file):
    # Which declaration the bridge refuses, when the file declares the entry in a form it
    # cannot call with the one request.
    if not callable(entry):
        for other in dir(module):
            if other != name and other.lower() == name.lower():
                place = declared(getattr(module, other), plugin_file)
                if place:
                    return dict({"kind": "name_case"}, **place)
        return None
    try:
        signature = inspect.signature(entry)
    except (TypeError, ValueError):
        return None
    try:
        signature.bind({})
        return None
    except TypeError:
        pass
    takes = sum(1 for parameter in signature.parameters.values()
                if parameter.kind in (parameter.POSITIONAL_ONLY, parameter.POSITIONAL_OR_KEYWORD)
                and parameter.default is parameter.empty)
    return dict({"kind": "parameters", "takes": takes, "passes": 1},
                **(declared(entry, plugin_file) or {}))


def make_request(method, values):
    if method == "run_preference":
        return {"path": url_decode(values[0])}
    first, second = ("composition_string", "reading_string") if method == "run_process" \
        else ("candidate_string", "composition_string")
    request = {first: url_decode(values[0]), second: url_decode(values[1]),
               "proxy_name": url_decode(values[2]), "proxy_port": int(url_decode(values[3])),
               "proxy_username": url_decode(values[4]), "proxy_password": url_decode(values[5])}
    if len(values) == 7:
        request["path"] = url_decode(values[6])
    return request


def main():
    out = sys.stdout
    plugin_file = os.path.abspath(url_decode(sys.argv[1]))
    method = url_decode(sys.argv[2])
    report = {"language": "python", "method": method}
    try:
        with open(plugin_file, "rb") as source:
            compile(source.read(), plugin_file, "exec", dont_inherit=True)
        report["compile"] = {"ok": True}
    except SyntaxError as error:
        report["compile"] = {"ok": False, "type": type(error).__name__,
                             "message": "%s: %s" % (type(error).__name__, error.msg),
                             "file": error.filename, "line": error.lineno,
                             "column": error.offset}
        return emit(report, out)
    except (OSError, ValueError) as error:
        report["compile"] = {"ok": False, "type": type(error).__name__, "message": str(error),
                             "file": None, "line": None}
        return emit(report, out)

    # Whatever the plug-in prints goes to standard error, so the report line stays whole.
    sys.stdout = sys.stderr
    try:
        module_name = os.path.splitext(os.path.basename(plugin_file))[0]
        loader = importlib.machinery.SourceFileLoader(module_name, plugin_file)
        module = importlib.util.module_from_spec(importlib.util.spec_from_loader(module_name,
                                                                               loader))
        sys.modules[module_name] = module
        loader.exec_module(module)
        report["load"] = {"ok": True}
    except BaseException as error:
        report["load"] = failure(error, plugin_file)
        return emit(report, out)

    name = "qiro_plugin_" + method
    entry = getattr(module, name, None)
    report["entry"] = {"name": name, "found": callable(entry)}
    refused = entry_shape(module, name, entry, plugin_file)
    if refused:
        report["entry"]["shape"] = refused
    if not callable(entry) or refused:
        return emit(report, out)
    try:
        value = entry(make_request(method, sys.argv[3:]))
        report["call"] = {"ok": True}
    except BaseException as error:
        report["call"] = failure(error, plugin_file)
        return emit(report, out)
    if method == "run_process":
        report["returned"] = shape(value)
        report["candidates"] = check_candidates(value)
    return emit(report, out)


main()

# Fixture: one candidate that shows what the request held; offers every entry (echo_request.xml).
import sys


def qiro_plugin_run_process(request):
    seen = ";".join(
        "%s=%s" % (key, request.get(key, "<absent>"))
        for key in ("reading_string", "proxy_name", "proxy_port", "proxy_username",
                    "proxy_password"))
    return {"candidate": [{"hyoki": request["composition_string"], "comment_xhtml": seen,
                           "alternative_type": "definite_string",
                           "alternative": "alt<" + request["composition_string"] + ">",
                           "alternative_alias": "alias", "info": "py"}]}


def qiro_plugin_run_callback(request):
    print("called back: %s for %s" % (request["candidate_string"], request["composition_string"]))


def qiro_plugin_run_preference(request):
    sys.stderr.write("settings folder: %s\n" % request["path"])

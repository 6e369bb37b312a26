# Fixture: one candidate that shows what the request held, in every field.


def qiro_plugin_run_process(request):
    seen = ";".join(
        "%s=%s" % (key, request.get(key, "<absent>"))
        for key in ("reading_string", "proxy_name", "proxy_port", "proxy_username",
                    "proxy_password", "path"))
    return {
        "candidate": [
            {
                "hyoki": request["composition_string"],
                "comment_xhtml": seen,
                "alternative_type": "definite_string",
                "alternative": "alt<" + request["composition_string"] + ">",
                "alternative_alias": "alias",
                "info": "py",
            }
        ]
    }

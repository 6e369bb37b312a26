# Offers nothing while the manager's proxy is "first"; the input "switch" puts the prepared
# settings file HOME/next.plist in place of the manager's, whose proxy is "second".
import os


def qiro_plugin_run_process(request):
    form = request["composition_string"]
    if form == "switch":
        home = os.environ["HOME"]
        os.replace(os.path.join(home, "next.plist"),
                   os.path.join(home, "Library", "Preferences",
                                "org.qiro.Qiro22.PluginManager.plist"))
    if request["proxy_name"] != "second":
        return {"candidate": []}
    return {"candidate": [{"hyoki": form, "comment": request["proxy_name"]}]}

# Loads, but its processing entry is a value and it has no other entry.
qiro_plugin_run_process = "not a function"

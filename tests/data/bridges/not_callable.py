# Its entry is a value, not a function.
qiro_plugin_run_process = "not a function"

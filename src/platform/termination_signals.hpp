#pragma once
// Makes the program's end by SIGINT, SIGTERM, SIGHUP or SIGQUIT take its running plug-ins along.

namespace qiro_plugin::utility {

// Installs handlers that kill the commands running now and then end the process by the same
// signal, as it would have ended without them. Call once, early in main.
void end_running_commands_on_termination_signals();

} // namespace qiro_plugin::utility

#pragma once
// Names and fixed texts shared by the host and the bridges on the interpreter's command line.

namespace qiro_plugin {

inline constexpr char QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_PROCESS[] = "run_process";
inline constexpr char QIRO_PLUGIN_SCRIPT_METHOD_NAME_SYNTAX_CHECK[] = "syntax_check";
inline constexpr char QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_PREFERENCE[] = "run_preference";
inline constexpr char QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_CALLBACK[] = "run_callback";

// The bridges' reply to a syntax check.
inline constexpr char QIRO_PLUGIN_SCRIPT_SYNTAX_OK_MESSAGE[] = "syntax ok";

// Written around every value on the command line; URL encoding keeps quotes and blanks out
// of the values, so nothing else needs escaping.
inline constexpr char QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_START[] = " \"";
inline constexpr char QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_END[] = "\"";

inline constexpr char QIRO_PLUGIN_ALTERNATIVE_TYPE_DEFINITE_STRING[] = "definite_string";
inline constexpr char QIRO_PLUGIN_ALTERNATIVE_TYPE_URL_JUMP_STRING[] = "url_jump_string";

} // namespace qiro_plugin

#pragma once
// Where an interpreter command comes from on PATH, told without starting it.

#include <string>

namespace qiro_plugin::diagnosis {

// "PATH" or "PATH -> REAL PATH", with ", a script" when it is a shell script such as a version
// manager's shim; "not on PATH" when it is not found.
std::string describe_interpreter(const std::string& a_command);

} // namespace qiro_plugin::diagnosis

#pragma once
// Whether bubblewrap can confine commands on this machine, and if not, what the user must change.

#include <string>

namespace qiro_plugin::utility {

// Where the check looks: the real process's view unless a caller (a test) says otherwise.
struct sandbox_host {
    std::string path_variable; // the PATH searched for bwrap
    std::string sysctl_folder; // normally /proc/sys
    bool privileged = false;   // root needs no user namespace
    static sandbox_host current_process();
};

// The bwrap program found, or an error that says what to install or which setting to change.
struct sandbox_availability {
    std::string tool;  // absolute path; empty when error is set
    std::string error; // empty when the sandbox works
};

// Looks for bwrap and reads the kernel's user-namespace settings. What no setting tells (an
// AppArmor rule, a seccomp filter of a container) only shows when bwrap runs: see
// sandbox_setup_error.
sandbox_availability check_sandbox(const sandbox_host& a_host);

// check_sandbox for this process; a success is remembered, a failure is checked again next
// time so that installing bubblewrap or changing a setting takes effect without a restart.
sandbox_availability check_sandbox();

// Starts one empty sandbox with a_tool, as a run would; empty when that works, else bwrap's
// own complaint and the settings that allow user namespaces. Costs one sandbox start, so a
// run calls it only after a confined command failed.
std::string sandbox_setup_error(const std::string& a_tool);

} // namespace qiro_plugin::utility

#pragma once
// An opt-in confinement of plug-in commands in bubblewrap, set per thread around a run.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qiro_plugin::utility {

// off: the command runs as the host would run it; on: confined, network kept; nonet: confined
// without network.
enum class sandbox_mode { off, on, nonet };

// "off", "on" or "nonet".
const char* sandbox_mode_name(sandbox_mode a_mode);
// The mode of one of those names; nothing for any other text.
std::optional<sandbox_mode> sandbox_mode_from_name(std::string_view a_name);

// What a confined command sees of the file system beyond the read-only system and a private
// /tmp. Folders are absolute, without a final "/"; one inside another keeps its own access.
struct sandbox_layout {
    sandbox_mode mode = sandbox_mode::off;
    std::string tool; // the bwrap executable, an absolute path
    std::vector<std::string> read_only;
    std::vector<std::string> read_write;
};

// The program and its arguments that run a_command (program first) confined by the layout,
// starting in a_working_folder, which must be one of the layout's folders or inside one.
std::vector<std::string> sandbox_command(const sandbox_layout& a_layout,
                                         const std::string& a_working_folder,
                                         const std::vector<std::string>& a_command);

// While it lives, every command that run_command starts on this thread runs confined by the
// layout (a mode of off confines nothing). Threads never share a layout, so parallel runs in
// one process each keep their own.
class sandbox_scope {
public:
    explicit sandbox_scope(sandbox_layout a_layout);
    ~sandbox_scope();
    sandbox_scope(const sandbox_scope&) = delete;
    sandbox_scope& operator=(const sandbox_scope&) = delete;
    const sandbox_layout& layout() const { return m_layout; }

private:
    sandbox_layout m_layout;
    const sandbox_layout* m_outer;
};

// The layout of the innermost scope of this thread, or nullptr when commands run unconfined.
const sandbox_layout* current_sandbox();

} // namespace qiro_plugin::utility

#pragma once
// The debug helpers as text, and the private folder a debugged run keeps them in.

#include <string>
#include <string_view>

namespace qiro_plugin::debugger_support {

// The helper of a language ("perl", "ruby", "python") as the interpreter reads it; empty for
// any other language.
const std::string& helper_script(std::string_view a_language);

// A folder of mode 0700 made for one run, removed with everything in it when the object ends.
class private_folder {
public:
    // Made inside a_parent (which must exist); throws std::runtime_error when it cannot be.
    explicit private_folder(const std::string& a_parent);
    ~private_folder();
    private_folder(const private_folder&) = delete;
    private_folder& operator=(const private_folder&) = delete;

    const std::string& path() const { return m_path; }
    // Writes a file of mode 0600 that must not exist yet; returns its path. Throws on failure.
    std::string write_file(const std::string& a_name, const std::string& a_content) const;

private:
    std::string m_path;
};

} // namespace qiro_plugin::debugger_support

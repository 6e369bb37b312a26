#pragma once
// A scope object that owns one temporary bridge file: creating it writes the file, destroying
// it removes the file.

#include <string>

namespace qiro_plugin {

class script_file_access {
public:
    // Writes the URL-decoded script to folder + file name, created exclusively with mode 0600.
    // A file already there is accepted only when it holds the same text. Throws
    // std::runtime_error "script_file_access::script_file_access() : fault." otherwise.
    script_file_access(const std::string& a_folder, const std::string& a_file_name,
                       const std::string& a_encoded_script);
    ~script_file_access();
    script_file_access(const script_file_access&) = delete;
    script_file_access& operator=(const script_file_access&) = delete;

    const std::string& get_path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace qiro_plugin

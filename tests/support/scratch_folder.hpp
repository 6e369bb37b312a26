#pragma once
// Scratch folders and whole-file reads and writes, shared by the tests of every folder.

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>

namespace test_support {

// A file of /proc whose process ends while it is read gives the empty text: the read fails
// with ESRCH, which libstdc++ throws from inside the stream.
inline std::string read_file(const std::filesystem::path& a_path) {
    try {
        std::ifstream stream(a_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    } catch (const std::exception&) {
        return {};
    }
}

// Writes the bytes, making the folders on the way.
inline void write_file(const std::filesystem::path& a_path, const std::string& a_bytes) {
    std::error_code ignored;
    std::filesystem::create_directories(a_path.parent_path(), ignored);
    std::ofstream(a_path, std::ios::binary | std::ios::trunc) << a_bytes;
}

// A shell script that only its owner may run, for a fake interpreter, editor or tool.
inline void write_script(const std::filesystem::path& a_path, const std::string& a_body) {
    write_file(a_path, "#!/bin/sh\n" + a_body);
    std::filesystem::permissions(a_path, std::filesystem::perms::owner_all);
}

// The names of what a folder holds; none when it cannot be read.
inline std::set<std::string> names_in(const std::filesystem::path& a_folder) {
    std::set<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(a_folder, error)) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

// The file's permission bits, all of them set when it cannot be looked at.
inline unsigned mode_of(const std::filesystem::path& a_path) {
    std::error_code ignored;
    return static_cast<unsigned>(std::filesystem::status(a_path, ignored).permissions()) & 07777;
}

// A fresh folder under the system's temporary folder, removed with everything in it.
class scratch_folder {
public:
    explicit scratch_folder(const std::string& a_prefix = "qiro") {
        std::string pattern =
            (std::filesystem::temp_directory_path() / (a_prefix + "-XXXXXX")).string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("mkdtemp failed");
        }
        m_path = pattern;
    }
    ~scratch_folder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace test_support

#pragma once
// Scratch folders, environment overrides and a view of this process's children for the tests.

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform_test {

// A fresh folder under the system's temporary folder, removed with everything in it.
class scratch_folder {
public:
    scratch_folder();
    ~scratch_folder();
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

// Sets (or with nullopt, unsets) an environment variable and restores it afterwards.
class environment_override {
public:
    environment_override(const char* a_name, const std::optional<std::string>& a_value);
    ~environment_override();
    environment_override(const environment_override&) = delete;
    environment_override& operator=(const environment_override&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_previous;
};

// HOME pointed at a fresh scratch folder for the lifetime of the object.
class scratch_home {
public:
    scratch_home() : m_home("HOME", m_folder.path().string()) {}
    const std::filesystem::path& path() const { return m_folder.path(); }

private:
    scratch_folder m_folder;
    environment_override m_home;
};

struct process_entry {
    pid_t pid;
    char state;
    pid_t parent;
    pid_t group;
};

// Every process visible in /proc, with its state, parent and process group.
std::vector<process_entry> list_processes();
// This process's children (zombies included).
std::vector<process_entry> own_children();
// Members of the process group, zombies included.
std::vector<process_entry> group_members(pid_t a_group);

std::string read_file(const std::filesystem::path& a_path);
void write_file(const std::filesystem::path& a_path, const std::string& a_bytes);

} // namespace platform_test

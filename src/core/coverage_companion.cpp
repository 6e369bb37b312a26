#include "core/coverage_companion.hpp"

#include "core/run_report.hpp"
#include "coverage/coverage_tools.hpp"
#include "platform/command_runner.hpp"
#include "text/string_encode.hpp"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>

namespace qiro_plugin::debugger {

namespace {

std::string text_of(const std::vector<char>& a_bytes) {
    return std::string(a_bytes.begin(), std::find(a_bytes.begin(), a_bytes.end(), '\0'));
}

std::optional<std::string> read_whole(const std::string& a_path) {
    std::ifstream file(a_path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Runs a command where the entry runs; its standard output, or nothing when it failed.
std::optional<std::string> run_in(const std::string& a_command, const std::string& a_folder) {
    std::vector<char> std_output;
    std::vector<char> std_error;
    utility::run_command_report report;
    const int result = utility::run_command(
        a_command, string_encode::MultiByteFilePathToWideChar(a_folder.c_str()), std_output,
        std_error, true, &report);
    if (result != 0 || report.exit_status.value_or(1) != 0) {
        return std::nullopt;
    }
    return text_of(std_output);
}

} // namespace

struct coverage_collection::impl {
    mutable std::mutex m_mutex;
    std::map<std::string, coverage::file_coverage> m_files;
    std::vector<std::string> m_problems;
    // Per language, once asked: empty when its tool is there, else why not.
    std::mutex m_check_mutex;
    std::map<std::string, std::string> m_checked;

    std::string refusal_for(const coverage::coverage_tool& a_tool,
                            const std::string& a_data_folder) {
        std::lock_guard lock(m_check_mutex);
        const auto found = m_checked.find(a_tool.language);
        if (found != m_checked.end()) {
            return found->second;
        }
        std::string refusal;
        if (!run_in(coverage::check_command(a_tool), a_data_folder)) {
            refusal = "coverage of " + a_tool.language + " plug-ins needs " + a_tool.name +
                      ", which " + a_tool.language + " cannot load: install the Debian package " +
                      a_tool.package + " (apt-get install " + a_tool.package + ")";
        }
        m_checked.emplace(a_tool.language, refusal);
        return refusal;
    }

    void add(coverage::file_coverage a_file) {
        std::lock_guard lock(m_mutex);
        coverage::merge(m_files[a_file.path], a_file);
    }

    void note(std::string a_problem) {
        std::lock_guard lock(m_mutex);
        m_problems.push_back(std::move(a_problem));
    }
};

namespace {

class coverage_companion : public entry_companion {
public:
    explicit coverage_companion(std::shared_ptr<coverage_collection::impl> a_collection)
        : m_collection(std::move(a_collection)) {}

    std::optional<std::string> prepare(const entry_context& a_context,
                                       utility::command_environment& a_environment) override {
        m_tool = coverage::tool_for(a_context.language);
        if (m_tool == nullptr) {
            return "no coverage tool for " + a_context.language;
        }
        std::string refusal = m_collection->refusal_for(*m_tool, a_context.data_folder);
        if (!refusal.empty()) {
            return refusal;
        }
        try {
            m_folder = std::make_unique<coverage::private_folder>(a_context.data_folder);
            coverage::write_helpers(*m_tool, m_folder->path());
        } catch (const std::exception& error) {
            m_folder.reset();
            return std::string("coverage cannot be measured: ") + error.what();
        }
        m_plugin = a_context.plugin_path;
        m_run_folder = a_context.data_folder;
        for (auto& variable :
             coverage::coverage_variables(*m_tool, m_folder->path(), m_plugin,
                                          [](const char* a_name) { return std::getenv(a_name); })) {
            a_environment.variables.push_back(std::move(variable));
        }
        return std::nullopt;
    }

    void finish(const run_report& a_report) noexcept override {
        static_cast<void>(a_report);
        try {
            collect();
        } catch (const std::exception& error) {
            m_collection->note(m_plugin + ": " + error.what());
        }
        m_folder.reset();
    }

private:
    void collect() {
        if (!m_folder) {
            return;
        }
        const std::string command = coverage::collect_command(*m_tool, m_folder->path());
        const auto output = command.empty()
                                ? read_whole(coverage::output_path(*m_tool, m_folder->path()))
                                : run_in(command, m_run_folder);
        auto file = output ? coverage::read_tool_output(*m_tool, *output, m_plugin, m_run_folder)
                           : coverage::file_coverage{m_plugin, {}, {}};
        if (file.lines.empty()) {
            m_collection->note(m_plugin + ": a run left no coverage data (it ended before " +
                               m_tool->name + " wrote what it measured)");
            return;
        }
        m_collection->add(std::move(file));
    }

    std::shared_ptr<coverage_collection::impl> m_collection;
    const coverage::coverage_tool* m_tool = nullptr;
    std::unique_ptr<coverage::private_folder> m_folder;
    std::string m_plugin;
    std::string m_run_folder;
};

} // namespace

coverage_collection::coverage_collection() : p_impl(std::make_shared<impl>()) {}

coverage_collection::~coverage_collection() = default;

std::shared_ptr<entry_companion> coverage_collection::companion() {
    return std::make_shared<coverage_companion>(p_impl);
}

std::vector<coverage::file_coverage> coverage_collection::files() const {
    std::lock_guard lock(p_impl->m_mutex);
    std::vector<coverage::file_coverage> files;
    for (const auto& [path, file] : p_impl->m_files) {
        files.push_back(file);
    }
    return files;
}

std::vector<std::string> coverage_collection::problems() const {
    std::lock_guard lock(p_impl->m_mutex);
    return p_impl->m_problems;
}

} // namespace qiro_plugin::debugger

#include "core/run_sandbox.hpp"

#include "text/string_encode.hpp"

#include <algorithm>
#include <filesystem>

namespace qiro_plugin::debugger {

namespace {

namespace fs = std::filesystem;

// The path with its links resolved when it exists, else as given, absolute either way.
fs::path resolved(const fs::path& a_path) {
    std::error_code error;
    fs::path path = fs::canonical(a_path, error);
    if (error) {
        path = fs::absolute(a_path, error).lexically_normal();
    }
    return path;
}

std::string without_final_slash(std::string a_path) {
    while (a_path.size() > 1 && a_path.back() == '/') {
        a_path.pop_back();
    }
    return a_path;
}

// True when a_inner is a_outer or lies inside it.
bool holds(const fs::path& a_outer, const fs::path& a_inner) {
    const auto [outer_end, inner_end] =
        std::mismatch(a_outer.begin(), a_outer.end(), a_inner.begin(), a_inner.end());
    return outer_end == a_outer.end() ||
           (std::next(outer_end) == a_outer.end() && outer_end->empty());
}

void add_once(std::vector<std::string>& a_list, const fs::path& a_path) {
    const std::string text = without_final_slash(a_path.string());
    if (std::find(a_list.begin(), a_list.end(), text) == a_list.end()) {
        a_list.push_back(text);
    }
}

} // namespace

std::variant<utility::sandbox_layout, std::string>
make_run_sandbox(utility::sandbox_mode a_mode, const plugin_entry& a_plugin,
                 const std::string& a_data_folder, const std::string& a_tool) {
    const fs::path folder(string_encode::WideCharToMultiByteFilePath(a_plugin.first.c_str()));
    const fs::path file =
        folder / string_encode::WideCharToMultiByteFilePath(a_plugin.second.c_str());
    const fs::path data(without_final_slash(a_data_folder));
    // The data folder is HOME/Library/Preferences/QIRO Lumen.
    const fs::path home = resolved(data.parent_path().parent_path().parent_path());

    utility::sandbox_layout layout;
    layout.mode = a_mode;
    layout.tool = a_tool;
    add_once(layout.read_write, data);
    // The folder as the command line names it, and where a linked plug-in file really lies.
    for (const fs::path& shown : {fs::absolute(folder).lexically_normal(), resolved(folder),
                                  resolved(file).parent_path()}) {
        if (holds(resolved(shown), home)) {
            return "the plug-in folder " + shown.string() +
                   " holds the home folder, which the sandbox would then show whole: keep the "
                   "plug-in in a folder of its own";
        }
        add_once(layout.read_only, shown);
    }
    return layout;
}

} // namespace qiro_plugin::debugger

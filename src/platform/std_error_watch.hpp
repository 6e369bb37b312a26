#pragma once
// A look at a running command's standard error as it arrives, for showing progress.

#include <functional>
#include <string_view>

namespace qiro_plugin::utility {

// Called on the thread that runs the command, at most once per 100 ms pass and only when the
// stream grew, with every byte kept so far (the view is valid during the call only). Nothing
// it does changes what the command's caller gets.
using std_error_watcher = std::function<void(std::string_view a_so_far)>;

// While it lives, run_command on this thread shows each command's standard error to the
// watcher as it comes; the innermost scope wins.
class std_error_watch_scope {
public:
    explicit std_error_watch_scope(std_error_watcher a_watcher);
    ~std_error_watch_scope();
    std_error_watch_scope(const std_error_watch_scope&) = delete;
    std_error_watch_scope& operator=(const std_error_watch_scope&) = delete;

private:
    std_error_watcher m_watcher;
    const std_error_watch_scope* m_outer;

    friend const std_error_watcher* current_std_error_watcher();
};

// The innermost watcher of this thread, or nullptr.
const std_error_watcher* current_std_error_watcher();

} // namespace qiro_plugin::utility

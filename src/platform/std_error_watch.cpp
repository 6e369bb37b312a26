#include "platform/std_error_watch.hpp"

#include <utility>

namespace qiro_plugin::utility {

namespace {

thread_local const std_error_watch_scope* innermost = nullptr;

} // namespace

std_error_watch_scope::std_error_watch_scope(std_error_watcher a_watcher)
    : m_watcher(std::move(a_watcher)), m_outer(innermost) {
    innermost = this;
}

std_error_watch_scope::~std_error_watch_scope() {
    innermost = m_outer;
}

const std_error_watcher* current_std_error_watcher() {
    return innermost != nullptr && innermost->m_watcher ? &innermost->m_watcher : nullptr;
}

} // namespace qiro_plugin::utility

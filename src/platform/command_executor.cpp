#include "platform/command_executor.hpp"

namespace qiro_plugin::utility {

namespace {

thread_local command_executor* g_executor = nullptr;

} // namespace

command_executor_scope::command_executor_scope(command_executor* a_executor) : m_outer(g_executor) {
    g_executor = a_executor;
}

command_executor_scope::~command_executor_scope() {
    g_executor = m_outer;
}

command_executor* current_command_executor() {
    return g_executor;
}

} // namespace qiro_plugin::utility

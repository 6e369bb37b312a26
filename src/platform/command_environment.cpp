#include "platform/command_environment.hpp"

#include <string_view>

namespace qiro_plugin::utility {

namespace {

thread_local const command_environment_scope* innermost = nullptr;

std::string_view name_of(std::string_view a_entry) {
    return a_entry.substr(0, a_entry.find('='));
}

} // namespace

command_environment_scope::command_environment_scope(command_environment a_environment)
    : m_environment(std::move(a_environment)), m_outer(innermost) {
    innermost = this;
}

command_environment_scope::~command_environment_scope() {
    innermost = m_outer;
}

bool commands_without_timeout() {
    for (auto* scope = innermost; scope != nullptr; scope = scope->m_outer) {
        if (scope->m_environment.without_timeout) {
            return true;
        }
    }
    return false;
}

bool commands_with_variables() {
    for (auto* scope = innermost; scope != nullptr; scope = scope->m_outer) {
        if (!scope->m_environment.variables.empty()) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> command_environment_block(char** a_base) {
    if (innermost == nullptr) {
        return {};
    }
    std::vector<std::string> block;
    for (char** entry = a_base; entry != nullptr && *entry != nullptr; ++entry) {
        block.emplace_back(*entry);
    }
    // Outer scopes first, so that an inner one replaces what an outer one set.
    std::vector<const command_environment_scope*> scopes;
    for (auto* scope = innermost; scope != nullptr; scope = scope->m_outer) {
        scopes.insert(scopes.begin(), scope);
    }
    for (const auto* scope : scopes) {
        for (const auto& [name, value] : scope->m_environment.variables) {
            std::erase_if(block, [&](const std::string& a_entry) { return name_of(a_entry) == name; });
            block.push_back(name + "=" + value);
        }
    }
    return block;
}

} // namespace qiro_plugin::utility

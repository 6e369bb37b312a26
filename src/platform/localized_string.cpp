#include "platform/localized_string.hpp"

#include <memory>
#include <mutex>

namespace qiro_plugin::utility {

namespace {

using provider = std::function<utf16_string(const std::string&)>;

std::mutex provider_mutex;
std::shared_ptr<const provider> installed_provider;

} // namespace

utf16_string localized_string(const std::string& a_key) {
    std::shared_ptr<const provider> lookup;
    {
        std::lock_guard lock(provider_mutex);
        lookup = installed_provider;
    }
    // Called outside the lock, so that a provider may itself look up or replace texts.
    if (!lookup || !*lookup) {
        return {};
    }
    return (*lookup)(a_key);
}

void set_localized_string_provider(provider a_provider) {
    auto replacement =
        a_provider ? std::make_shared<const provider>(std::move(a_provider)) : nullptr;
    std::lock_guard lock(provider_mutex);
    installed_provider = std::move(replacement);
}

} // namespace qiro_plugin::utility

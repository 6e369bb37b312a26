#include "core/plugin_menu_model.hpp"

#include "core/localized_texts.hpp"

namespace qiro_plugin::debugger {

bool plugin_menu_model::set_plugins(plugin_list a_plugins) {
    std::optional<utf16_string> remembered;
    if (m_selected) {
        remembered = m_plugins[*m_selected].second;
    }
    m_plugins = std::move(a_plugins);
    m_selected.reset();
    if (m_plugins.empty()) {
        m_menu_enabled = false;
        m_run_enabled = false;
        return false;
    }
    m_menu_enabled = true;
    m_selected = 0;
    m_run_enabled = true;
    if (remembered) {
        for (std::size_t i = 0; i < m_plugins.size(); ++i) {
            if (m_plugins[i].second == *remembered) {
                m_selected = i;
                break;
            }
        }
    }
    return true;
}

std::vector<utf16_string> plugin_menu_model::item_titles() const {
    std::vector<utf16_string> titles;
    titles.reserve(m_plugins.size());
    for (const auto& entry : m_plugins) {
        titles.push_back(entry.second);
    }
    return titles;
}

void plugin_menu_model::select(std::size_t a_index) {
    if (a_index < m_plugins.size()) {
        m_selected = a_index;
    }
}

std::optional<plugin_entry> plugin_menu_model::selected_plugin() const {
    if (!m_selected) {
        return std::nullopt;
    }
    return m_plugins[*m_selected];
}

void reload_plugins(plugin_menu_model& a_model, const utf16_string& a_folder,
                    alert_sink& a_alerts) {
    if (!a_model.set_plugins(find_plugin_module(a_folder, plugin_extensions()))) {
        a_alerts.show_alert(ALERT_RELOAD_ERROR);
    }
}

void reload_plugins(plugin_menu_model& a_model, alert_sink& a_alerts) {
    reload_plugins(a_model, plugin_folder(), a_alerts);
}

} // namespace qiro_plugin::debugger

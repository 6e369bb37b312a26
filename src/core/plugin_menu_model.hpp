#pragma once
// The state of the plug-in menu and the Run button, kept in step with the discovery result.

#include "core/plugin_discovery.hpp"
#include "core/run_sinks.hpp"

#include <optional>
#include <vector>

namespace qiro_plugin::debugger {

class plugin_menu_model {
public:
    // Replaces the list: the selected title is kept when it is still there, else item 0 is
    // selected. False (menu and Run disabled, nothing selected) when the list is empty.
    bool set_plugins(plugin_list a_plugins);

    const plugin_list& plugins() const { return m_plugins; }
    // The menu's item titles: the file names, in list order.
    std::vector<utf16_string> item_titles() const;
    std::optional<std::size_t> selected_index() const { return m_selected; }
    // Selects an item; an index out of range is ignored.
    void select(std::size_t a_index);
    // The entry of the selected item, if any.
    std::optional<plugin_entry> selected_plugin() const;
    bool is_menu_enabled() const { return m_menu_enabled; }
    bool is_run_enabled() const { return m_run_enabled; }

private:
    plugin_list m_plugins;
    std::optional<std::size_t> m_selected;
    bool m_menu_enabled = false;
    bool m_run_enabled = false;
};

// A reload: lists the plug-in folder for "pl", "py", "rb" into the model and shows
// "AlertReloadError" when it finds nothing.
void reload_plugins(plugin_menu_model& a_model, alert_sink& a_alerts);
void reload_plugins(plugin_menu_model& a_model, const utf16_string& a_folder, alert_sink& a_alerts);

} // namespace qiro_plugin::debugger

#include "settings/qiro_plugin_module_info.hpp"

namespace qiro_plugin {

bool qiro_plugin_setup_info_compare::operator()(const qiro_plugin_module_info& a_first,
                                                const qiro_plugin_module_info& a_second) const {
    // char16_t compares as an unsigned 16-bit value, which is the order wanted.
    return a_first.plugin_path + a_first.plugin_name < a_second.plugin_path + a_second.plugin_name;
}

} // namespace qiro_plugin

#pragma once
// Filling the records a run hands to the plug-in from the written form and the manager settings.

#include "runtime/plugin_records.hpp"
#include "settings/manager_preference_access.hpp"

namespace qiro_plugin::debugger {

inline constexpr std::size_t WRITTEN_FORM_MAX_LENGTH = 100;

// Clears the record, stores the written form and the reading (each cut to its buffer), sets
// the three fields the debugger marks with 1, and the proxy values the settings allow.
void fill_processing_request(qiro_plugin_request& a_request, const utf16_string& a_written_form,
                             const utf16_string& a_reading,
                             const manager_preference_data& a_settings);

// The same for a callback: the committed candidate, the written form and the proxy values.
void fill_callback_request(qiro_plugin_callback& a_callback, const utf16_string& a_candidate,
                           const utf16_string& a_written_form,
                           const manager_preference_data& a_settings);

} // namespace qiro_plugin::debugger

#pragma once
// Preference domains kept as property-list files: copy, set, synchronise and list.

#include "settings/preference_value.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::preferences {

// Where a domain lives: the current user's folder (~/Library/Preferences, valid on every
// host) or the machine's folder (/Library/Preferences, or $QIRO_MACHINE_PREFERENCES_DIR),
// shared by all users of this host.
enum class preference_scope { current_user_any_host, any_user_current_host };

// The folder of a scope; empty when the user's home cannot be found.
std::filesystem::path preferences_folder(preference_scope a_scope);

// "<folder>/<domain>.plist"; nothing for an empty domain, one holding "/" or NUL, "." or
// "..", or when the folder is unknown.
std::optional<std::filesystem::path> domain_file_path(const std::string& a_domain,
                                                      preference_scope a_scope);

// The stored value of the key, with this process's unsynchronised changes applied.
// A missing, unreadable or unparsable file has no values; reading never writes.
std::optional<preference_value> copy_value(const std::string& a_key, const std::string& a_domain,
                                           preference_scope a_scope);

// Every value of the domain, as copy_value sees them, in file order.
preference_value::dictionary_type copy_domain(const std::string& a_domain,
                                              preference_scope a_scope);

// Records a change (nothing removes the key) in this process until the domain is
// synchronised; other keys of the file are kept.
void set_value(const std::string& a_key, std::optional<preference_value> a_value,
               const std::string& a_domain, preference_scope a_scope);

// Writes the recorded changes over the file as it is now, through a temporary file and a
// rename. False, with the changes still recorded and the file untouched, when the file
// exists but cannot be parsed or the new file cannot be written.
bool synchronize(const std::string& a_domain, preference_scope a_scope);

// Forgets the changes recorded for the domain and not yet written.
void discard_changes(const std::string& a_domain, preference_scope a_scope);

// A number that moves whenever this process records, writes or forgets changes of any domain:
// what copy_value sees can differ from the files only when it moved.
std::uint64_t change_count();

// The domains that have a file in the scope's folder, sorted.
std::vector<std::string> copy_application_list(preference_scope a_scope);

// True when the domain's file exists and cannot be read as a dictionary.
bool is_domain_damaged(const std::string& a_domain, preference_scope a_scope);

} // namespace qiro_plugin::preferences

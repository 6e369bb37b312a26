#pragma once
// Generic passwords in the user's keychain (the Secret Service), keyed by service and account.

#include <string>

namespace qiro_plugin::utility {

// All texts are byte strings in UTF-8 and may be empty; the password may hold any bytes.
// An empty service, a text that is not UTF-8 or holds a zero byte, a locked or missing
// keyring, or no Secret Service at all gives the empty password or false at once: these
// calls never ask the user anything and never wait more than a few seconds.

// The stored password, byte for byte; empty when there is none.
std::string get_password_in_keychain(const std::string& a_service, const std::string& a_account);

// Adds the item to the default keyring; an item that already exists gets the new password,
// and that counts as success whatever the update gives.
bool set_password_in_keychain(const std::string& a_service, const std::string& a_account,
                              const std::string& a_password);

// Replaces the password of an existing item; false when there is none.
bool modify_password_in_keychain(const std::string& a_service, const std::string& a_account,
                                 const std::string& a_password);

// Removes the item; false when there is none.
bool delete_item_in_keychain(const std::string& a_service, const std::string& a_account);

} // namespace qiro_plugin::utility

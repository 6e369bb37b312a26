#pragma once
// Whether a Secret Service (the keyring that keeps the proxy password) can be reached.

namespace qiro_plugin::debugger {

// True when the session bus has a Secret Service running or able to start on demand;
// answers within a second even when there is no session bus.
bool is_keyring_available();

} // namespace qiro_plugin::debugger

#pragma once
// The Secret Service client library and the GLib functions it needs, opened on first use.

#include <libsecret/secret.h>

namespace qiro_plugin::utility {

// Loading libsecret brings GIO, GObject and GLib with it, which costs every process start
// more than the rest of the program's libraries; so the keychain opens it only when a call
// needs it. Each member points at the function of the same name with a "g_" or "secret_"
// prefix (the prefixed names would be expanded by GLib's function-like macros).
struct secret_library {
    decltype(&::g_object_ref) object_ref = nullptr;
    decltype(&::g_object_unref) object_unref = nullptr;
    decltype(&::g_clear_error) clear_error = nullptr;
    decltype(&::g_cancellable_new) cancellable_new = nullptr;
    decltype(&::g_cancellable_cancel) cancellable_cancel = nullptr;
    decltype(&::g_utf8_validate) utf8_validate = nullptr;
    decltype(&::g_bus_get_sync) bus_get_sync = nullptr;
    decltype(&::g_dbus_connection_set_exit_on_close) dbus_connection_set_exit_on_close = nullptr;
    decltype(&::g_hash_table_new) hash_table_new = nullptr;
    decltype(&::g_hash_table_insert) hash_table_insert = nullptr;
    decltype(&::g_hash_table_unref) hash_table_unref = nullptr;
    decltype(&::g_str_hash) str_hash = nullptr;
    decltype(&::g_str_equal) str_equal = nullptr;
    decltype(&::g_list_free_full) list_free_full = nullptr;
    decltype(&::secret_service_get_sync) service_get_sync = nullptr;
    decltype(&::secret_service_search_sync) service_search_sync = nullptr;
    decltype(&::secret_item_get_locked) item_get_locked = nullptr;
    decltype(&::secret_item_get_secret) item_get_secret = nullptr;
    decltype(&::secret_item_set_secret_sync) item_set_secret_sync = nullptr;
    decltype(&::secret_item_create_sync) item_create_sync = nullptr;
    decltype(&::secret_item_delete_sync) item_delete_sync = nullptr;
    decltype(&::secret_collection_for_alias_sync) collection_for_alias_sync = nullptr;
    decltype(&::secret_collection_get_locked) collection_get_locked = nullptr;
    decltype(&::secret_value_new) value_new = nullptr;
    decltype(&::secret_value_get) value_get = nullptr;
    decltype(&::secret_value_unref) value_unref = nullptr;
};

// The library with every function found, or null when it is not installed or lacks one.
// The first call loads it, once for the whole process, and it stays loaded: GLib cannot be
// unloaded safely once its threads have started.
const secret_library* load_secret_library();

} // namespace qiro_plugin::utility

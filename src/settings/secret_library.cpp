#include "settings/secret_library.hpp"

#include <dlfcn.h>

#include <mutex>

namespace qiro_plugin::utility {

namespace {

template <typename function> bool find(void* a_handle, const char* a_name, function& a_function) {
    void* address = dlsym(a_handle, a_name);
    a_function = reinterpret_cast<function>(address);
    return address != nullptr;
}

// dlsym on the handle searches libsecret and the libraries it depends on, so the GLib
// functions are found through it as well.
bool find_all(void* a_handle, secret_library& a_library) {
    return find(a_handle, "g_object_ref", a_library.object_ref) &&
           find(a_handle, "g_object_unref", a_library.object_unref) &&
           find(a_handle, "g_clear_error", a_library.clear_error) &&
           find(a_handle, "g_cancellable_new", a_library.cancellable_new) &&
           find(a_handle, "g_cancellable_cancel", a_library.cancellable_cancel) &&
           find(a_handle, "g_utf8_validate", a_library.utf8_validate) &&
           find(a_handle, "g_bus_get_sync", a_library.bus_get_sync) &&
           find(a_handle, "g_dbus_connection_set_exit_on_close",
                a_library.dbus_connection_set_exit_on_close) &&
           find(a_handle, "g_hash_table_new", a_library.hash_table_new) &&
           find(a_handle, "g_hash_table_insert", a_library.hash_table_insert) &&
           find(a_handle, "g_hash_table_unref", a_library.hash_table_unref) &&
           find(a_handle, "g_str_hash", a_library.str_hash) &&
           find(a_handle, "g_str_equal", a_library.str_equal) &&
           find(a_handle, "g_list_free_full", a_library.list_free_full) &&
           find(a_handle, "secret_service_get_sync", a_library.service_get_sync) &&
           find(a_handle, "secret_service_search_sync", a_library.service_search_sync) &&
           find(a_handle, "secret_item_get_locked", a_library.item_get_locked) &&
           find(a_handle, "secret_item_get_secret", a_library.item_get_secret) &&
           find(a_handle, "secret_item_set_secret_sync", a_library.item_set_secret_sync) &&
           find(a_handle, "secret_item_create_sync", a_library.item_create_sync) &&
           find(a_handle, "secret_item_delete_sync", a_library.item_delete_sync) &&
           find(a_handle, "secret_collection_for_alias_sync",
                a_library.collection_for_alias_sync) &&
           find(a_handle, "secret_collection_get_locked", a_library.collection_get_locked) &&
           find(a_handle, "secret_value_new", a_library.value_new) &&
           find(a_handle, "secret_value_get", a_library.value_get) &&
           find(a_handle, "secret_value_unref", a_library.value_unref);
}

} // namespace

const secret_library* load_secret_library() {
    static std::once_flag once;
    static secret_library library;
    static const secret_library* loaded = nullptr;
    std::call_once(once, [] {
        void* handle = dlopen("libsecret-1.so.0", RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) {
            return;
        }
        // A library that lacks a function stays loaded all the same: GLib's start-up has
        // already run and is not meant to be undone.
        if (find_all(handle, library)) {
            loaded = &library;
        }
    });
    return loaded;
}

} // namespace qiro_plugin::utility

#include "settings/keychain.hpp"

#include <libsecret/secret.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <sys/stat.h>
#include <thread>

namespace qiro_plugin::utility {

namespace {

// A keyring that does not answer within this time is treated as absent.
constexpr std::chrono::seconds call_limit{5};
constexpr const char* password_content_type = "application/octet-stream";

const SecretSchema* generic_password_schema() {
    static const SecretSchema schema = [] {
        SecretSchema value{};
        value.name = "org.qiro.GenericPassword";
        value.flags = SECRET_SCHEMA_NONE;
        value.attributes[0].name = "service";
        value.attributes[0].type = SECRET_SCHEMA_ATTRIBUTE_STRING;
        value.attributes[1].name = "account";
        value.attributes[1].type = SECRET_SCHEMA_ATTRIBUTE_STRING;
        return value;
    }();
    return &schema;
}

template <typename T> struct object_deleter {
    void operator()(T* a_object) const { g_object_unref(a_object); }
};
template <typename T> using object_handle = std::unique_ptr<T, object_deleter<T>>;

struct error_holder {
    GError* error = nullptr;
    error_holder() = default;
    error_holder(const error_holder&) = delete;
    error_holder& operator=(const error_holder&) = delete;
    ~error_holder() { g_clear_error(&error); }
    GError** out() {
        g_clear_error(&error);
        return &error;
    }
};

// Cancels the calls of one operation when the keyring takes too long to answer.
class call_deadline {
public:
    call_deadline() : m_cancellable(g_cancellable_new()) {
        m_watchdog = std::thread([this] {
            std::unique_lock lock(m_mutex);
            if (!m_condition.wait_for(lock, call_limit, [this] { return m_finished; })) {
                g_cancellable_cancel(m_cancellable);
            }
        });
    }
    call_deadline(const call_deadline&) = delete;
    call_deadline& operator=(const call_deadline&) = delete;
    ~call_deadline() {
        {
            std::lock_guard lock(m_mutex);
            m_finished = true;
        }
        m_condition.notify_one();
        m_watchdog.join();
        g_object_unref(m_cancellable);
    }
    GCancellable* get() const { return m_cancellable; }

private:
    GCancellable* m_cancellable;
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_finished = false;
    std::thread m_watchdog;
};

bool usable_text(const std::string& a_text) {
    return a_text.find('\0') == std::string::npos &&
           g_utf8_validate(a_text.data(), static_cast<gssize>(a_text.size()), nullptr);
}

bool usable_names(const std::string& a_service, const std::string& a_account) {
    return !a_service.empty() && usable_text(a_service) && usable_text(a_account);
}

// Without an address and without the per-user bus socket, GIO would try to start a bus
// of its own; there is no keyring to find that way.
bool session_bus_known() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        address != nullptr && *address != '\0') {
        return true;
    }
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime == nullptr || *runtime == '\0') {
        return false;
    }
    const std::string socket_path = std::string(runtime) + "/bus";
    struct stat status {};
    return stat(socket_path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

object_handle<SecretService> open_service(GCancellable* a_cancellable) {
    if (!session_bus_known()) {
        return nullptr;
    }
    error_holder error;
    object_handle<GDBusConnection> bus(
        g_bus_get_sync(G_BUS_TYPE_SESSION, a_cancellable, error.out()));
    if (!bus) {
        return nullptr;
    }
    // A keyring or bus that goes away must not take this process with it.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    return object_handle<SecretService>(
        secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, a_cancellable, error.out()));
}

// The first unlocked item of the service and account; locked items are passed over
// because opening them would ask the user.
object_handle<SecretItem> find_item(SecretService* a_service, const std::string& a_service_name,
                                    const std::string& a_account, bool a_load_secret,
                                    GCancellable* a_cancellable) {
    GHashTable* attributes = g_hash_table_new(g_str_hash, g_str_equal);
    g_hash_table_insert(attributes, const_cast<char*>("service"),
                        const_cast<char*>(a_service_name.c_str()));
    g_hash_table_insert(attributes, const_cast<char*>("account"),
                        const_cast<char*>(a_account.c_str()));
    const auto flags = static_cast<SecretSearchFlags>(
        SECRET_SEARCH_ALL | (a_load_secret ? SECRET_SEARCH_LOAD_SECRETS : SECRET_SEARCH_NONE));
    error_holder error;
    GList* items = secret_service_search_sync(a_service, generic_password_schema(), attributes,
                                              flags, a_cancellable, error.out());
    g_hash_table_unref(attributes);
    object_handle<SecretItem> found;
    for (GList* link = items; link != nullptr; link = link->next) {
        auto* item = static_cast<SecretItem*>(link->data);
        if (!secret_item_get_locked(item)) {
            found.reset(static_cast<SecretItem*>(g_object_ref(item)));
            break;
        }
    }
    g_list_free_full(items, g_object_unref);
    return found;
}

struct value_deleter {
    void operator()(SecretValue* a_value) const { secret_value_unref(a_value); }
};
using value_handle = std::unique_ptr<SecretValue, value_deleter>;

value_handle make_value(const std::string& a_password) {
    return value_handle(secret_value_new(a_password.data(), static_cast<gssize>(a_password.size()),
                                         password_content_type));
}

bool modify_item(SecretItem* a_item, const std::string& a_password, GCancellable* a_cancellable) {
    auto value = make_value(a_password);
    error_holder error;
    return secret_item_set_secret_sync(a_item, value.get(), a_cancellable, error.out()) != FALSE;
}

} // namespace

std::string get_password_in_keychain(const std::string& a_service, const std::string& a_account) {
    if (!usable_names(a_service, a_account)) {
        return {};
    }
    call_deadline deadline;
    auto service = open_service(deadline.get());
    if (!service) {
        return {};
    }
    auto item = find_item(service.get(), a_service, a_account, true, deadline.get());
    if (!item) {
        return {};
    }
    value_handle value(secret_item_get_secret(item.get()));
    if (!value) {
        return {};
    }
    gsize length = 0;
    const gchar* bytes = secret_value_get(value.get(), &length);
    return bytes == nullptr ? std::string() : std::string(bytes, length);
}

bool set_password_in_keychain(const std::string& a_service, const std::string& a_account,
                              const std::string& a_password) {
    if (!usable_names(a_service, a_account)) {
        return false;
    }
    call_deadline deadline;
    auto service = open_service(deadline.get());
    if (!service) {
        return false;
    }
    if (auto item = find_item(service.get(), a_service, a_account, false, deadline.get())) {
        modify_item(item.get(), a_password, deadline.get());
        return true;
    }
    error_holder error;
    object_handle<SecretCollection> collection(
        secret_collection_for_alias_sync(service.get(), SECRET_COLLECTION_DEFAULT,
                                         SECRET_COLLECTION_NONE, deadline.get(), error.out()));
    // Creating the default keyring or unlocking it would ask the user.
    if (!collection || secret_collection_get_locked(collection.get())) {
        return false;
    }
    GHashTable* attributes = g_hash_table_new(g_str_hash, g_str_equal);
    g_hash_table_insert(attributes, const_cast<char*>("service"),
                        const_cast<char*>(a_service.c_str()));
    g_hash_table_insert(attributes, const_cast<char*>("account"),
                        const_cast<char*>(a_account.c_str()));
    auto value = make_value(a_password);
    object_handle<SecretItem> created(secret_item_create_sync(
        collection.get(), generic_password_schema(), attributes, a_service.c_str(), value.get(),
        SECRET_ITEM_CREATE_REPLACE, deadline.get(), error.out()));
    g_hash_table_unref(attributes);
    return created != nullptr;
}

bool modify_password_in_keychain(const std::string& a_service, const std::string& a_account,
                                 const std::string& a_password) {
    if (!usable_names(a_service, a_account)) {
        return false;
    }
    call_deadline deadline;
    auto service = open_service(deadline.get());
    if (!service) {
        return false;
    }
    auto item = find_item(service.get(), a_service, a_account, false, deadline.get());
    return item && modify_item(item.get(), a_password, deadline.get());
}

bool delete_item_in_keychain(const std::string& a_service, const std::string& a_account) {
    if (!usable_names(a_service, a_account)) {
        return false;
    }
    call_deadline deadline;
    auto service = open_service(deadline.get());
    if (!service) {
        return false;
    }
    auto item = find_item(service.get(), a_service, a_account, false, deadline.get());
    if (!item) {
        return false;
    }
    error_holder error;
    return secret_item_delete_sync(item.get(), deadline.get(), error.out()) != FALSE;
}

} // namespace qiro_plugin::utility

#include "settings/keychain.hpp"

#include "settings/secret_library.hpp"

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
    const secret_library* m_library = nullptr;
    void operator()(T* a_object) const { m_library->object_unref(a_object); }
};
template <typename T> using object_handle = std::unique_ptr<T, object_deleter<T>>;

template <typename T> object_handle<T> hold(const secret_library& a_library, T* a_object) {
    return object_handle<T>(a_object, object_deleter<T>{&a_library});
}

class error_holder {
public:
    explicit error_holder(const secret_library& a_library) : m_library(a_library) {}
    error_holder(const error_holder&) = delete;
    error_holder& operator=(const error_holder&) = delete;
    ~error_holder() { m_library.clear_error(&m_error); }
    GError** out() {
        m_library.clear_error(&m_error);
        return &m_error;
    }

private:
    const secret_library& m_library;
    GError* m_error = nullptr;
};

// Cancels the calls of one operation when the keyring takes too long to answer.
class call_deadline {
public:
    explicit call_deadline(const secret_library& a_library)
        : m_library(a_library), m_cancellable(a_library.cancellable_new()) {
        m_watchdog = std::thread([this] {
            std::unique_lock lock(m_mutex);
            if (!m_condition.wait_for(lock, call_limit, [this] { return m_finished; })) {
                m_library.cancellable_cancel(m_cancellable);
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
        m_library.object_unref(m_cancellable);
    }
    GCancellable* get() const { return m_cancellable; }

private:
    const secret_library& m_library;
    GCancellable* m_cancellable;
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_finished = false;
    std::thread m_watchdog;
};

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

bool usable_text(const secret_library& a_library, const std::string& a_text) {
    return a_text.find('\0') == std::string::npos &&
           a_library.utf8_validate(a_text.data(), static_cast<gssize>(a_text.size()), nullptr);
}

// The library for a call on these names, or null when the call cannot succeed. Names are
// checked for what needs no library first, and the library is not loaded at all when there
// is no session bus to reach.
const secret_library* library_for(const std::string& a_service, const std::string& a_account) {
    if (a_service.empty() || !session_bus_known()) {
        return nullptr;
    }
    const secret_library* library = load_secret_library();
    if (library == nullptr || !usable_text(*library, a_service) ||
        !usable_text(*library, a_account)) {
        return nullptr;
    }
    return library;
}

object_handle<SecretService> open_service(const secret_library& a_library,
                                          GCancellable* a_cancellable) {
    error_holder error(a_library);
    auto bus =
        hold(a_library, a_library.bus_get_sync(G_BUS_TYPE_SESSION, a_cancellable, error.out()));
    if (!bus) {
        return hold<SecretService>(a_library, nullptr);
    }
    // A keyring or bus that goes away must not take this process with it.
    a_library.dbus_connection_set_exit_on_close(bus.get(), FALSE);
    return hold(a_library, a_library.service_get_sync(SECRET_SERVICE_OPEN_SESSION, a_cancellable,
                                                      error.out()));
}

GHashTable* make_attributes(const secret_library& a_library, const std::string& a_service,
                            const std::string& a_account) {
    GHashTable* attributes = a_library.hash_table_new(a_library.str_hash, a_library.str_equal);
    a_library.hash_table_insert(attributes, const_cast<char*>("service"),
                                const_cast<char*>(a_service.c_str()));
    a_library.hash_table_insert(attributes, const_cast<char*>("account"),
                                const_cast<char*>(a_account.c_str()));
    return attributes;
}

// The first unlocked item of the service and account; locked items are passed over
// because opening them would ask the user.
object_handle<SecretItem> find_item(const secret_library& a_library, SecretService* a_service,
                                    const std::string& a_service_name, const std::string& a_account,
                                    bool a_load_secret, GCancellable* a_cancellable) {
    GHashTable* attributes = make_attributes(a_library, a_service_name, a_account);
    const auto flags = static_cast<SecretSearchFlags>(
        SECRET_SEARCH_ALL | (a_load_secret ? SECRET_SEARCH_LOAD_SECRETS : SECRET_SEARCH_NONE));
    error_holder error(a_library);
    GList* items = a_library.service_search_sync(a_service, generic_password_schema(), attributes,
                                                 flags, a_cancellable, error.out());
    a_library.hash_table_unref(attributes);
    auto found = hold<SecretItem>(a_library, nullptr);
    for (GList* link = items; link != nullptr; link = link->next) {
        auto* item = static_cast<SecretItem*>(link->data);
        if (!a_library.item_get_locked(item)) {
            found.reset(static_cast<SecretItem*>(a_library.object_ref(item)));
            break;
        }
    }
    a_library.list_free_full(items, a_library.object_unref);
    return found;
}

struct value_deleter {
    const secret_library* m_library = nullptr;
    void operator()(SecretValue* a_value) const { m_library->value_unref(a_value); }
};
using value_handle = std::unique_ptr<SecretValue, value_deleter>;

value_handle make_value(const secret_library& a_library, const std::string& a_password) {
    return value_handle(a_library.value_new(a_password.data(),
                                            static_cast<gssize>(a_password.size()),
                                            password_content_type),
                        value_deleter{&a_library});
}

bool modify_item(const secret_library& a_library, SecretItem* a_item, const std::string& a_password,
                 GCancellable* a_cancellable) {
    auto value = make_value(a_library, a_password);
    error_holder error(a_library);
    return a_library.item_set_secret_sync(a_item, value.get(), a_cancellable, error.out()) != FALSE;
}

// Every call begins alike: the library, a deadline for the call and the opened service; a
// call that cannot get that far answers a_failure.
template <typename result_type, typename action_type>
result_type with_service(const std::string& a_service, const std::string& a_account,
                         result_type a_failure, action_type&& a_action) {
    const secret_library* library = library_for(a_service, a_account);
    if (library == nullptr) {
        return a_failure;
    }
    call_deadline deadline(*library);
    auto service = open_service(*library, deadline.get());
    if (!service) {
        return a_failure;
    }
    return a_action(*library, service.get(), deadline.get());
}

} // namespace

std::string get_password_in_keychain(const std::string& a_service, const std::string& a_account) {
    return with_service(
        a_service, a_account, std::string(),
        [&](const secret_library& a_library, SecretService* a_handle,
            GCancellable* a_deadline) -> std::string {
            auto item = find_item(a_library, a_handle, a_service, a_account, true, a_deadline);
            if (!item) {
                return {};
            }
            value_handle value(a_library.item_get_secret(item.get()), value_deleter{&a_library});
            if (!value) {
                return {};
            }
            gsize length = 0;
            const gchar* bytes = a_library.value_get(value.get(), &length);
            return bytes == nullptr ? std::string() : std::string(bytes, length);
        });
}

bool set_password_in_keychain(const std::string& a_service, const std::string& a_account,
                              const std::string& a_password) {
    return with_service(
        a_service, a_account, false,
        [&](const secret_library& a_library, SecretService* a_handle, GCancellable* a_deadline) {
            if (auto item =
                    find_item(a_library, a_handle, a_service, a_account, false, a_deadline)) {
                modify_item(a_library, item.get(), a_password, a_deadline);
                return true;
            }
            error_holder error(a_library);
            auto collection = hold(a_library, a_library.collection_for_alias_sync(
                                                  a_handle, SECRET_COLLECTION_DEFAULT,
                                                  SECRET_COLLECTION_NONE, a_deadline, error.out()));
            // Creating the default keyring or unlocking it would ask the user.
            if (!collection || a_library.collection_get_locked(collection.get())) {
                return false;
            }
            GHashTable* attributes = make_attributes(a_library, a_service, a_account);
            auto value = make_value(a_library, a_password);
            auto created =
                hold(a_library,
                     a_library.item_create_sync(
                         collection.get(), generic_password_schema(), attributes, a_service.c_str(),
                         value.get(), SECRET_ITEM_CREATE_REPLACE, a_deadline, error.out()));
            a_library.hash_table_unref(attributes);
            return created != nullptr;
        });
}

bool modify_password_in_keychain(const std::string& a_service, const std::string& a_account,
                                 const std::string& a_password) {
    return with_service(
        a_service, a_account, false,
        [&](const secret_library& a_library, SecretService* a_handle, GCancellable* a_deadline) {
            auto item = find_item(a_library, a_handle, a_service, a_account, false, a_deadline);
            return item && modify_item(a_library, item.get(), a_password, a_deadline);
        });
}

bool delete_item_in_keychain(const std::string& a_service, const std::string& a_account) {
    return with_service(
        a_service, a_account, false,
        [&](const secret_library& a_library, SecretService* a_handle, GCancellable* a_deadline) {
            auto item = find_item(a_library, a_handle, a_service, a_account, false, a_deadline);
            if (!item) {
                return false;
            }
            error_holder error(a_library);
            return a_library.item_delete_sync(item.get(), a_deadline, error.out()) != FALSE;
        });
}

} // namespace qiro_plugin::utility

#include "text/iconv_cache.hpp"

#include <map>
#include <string>
#include <utility>

namespace qiro_plugin::string_encode::detail {

namespace {

// Opening a character set costs milliseconds the first time; a conversion costs
// microseconds, so each thread keeps its handles for its whole life.
class handle_cache {
public:
    handle_cache() = default;
    handle_cache(const handle_cache&) = delete;
    handle_cache& operator=(const handle_cache&) = delete;
    ~handle_cache() {
        for (auto& entry : m_handles) {
            if (entry.second != invalid()) {
                iconv_close(entry.second);
            }
        }
    }

    iconv_t get(const char* a_to, const char* a_from) {
        auto key = std::make_pair(std::string(a_to), std::string(a_from));
        auto found = m_handles.find(key);
        if (found == m_handles.end()) {
            found = m_handles.emplace(std::move(key), iconv_open(a_to, a_from)).first;
        }
        if (found->second != invalid()) {
            iconv(found->second, nullptr, nullptr, nullptr, nullptr);
        }
        return found->second;
    }

    static iconv_t invalid() { return reinterpret_cast<iconv_t>(-1); }

private:
    std::map<std::pair<std::string, std::string>, iconv_t> m_handles;
};

} // namespace

iconv_t cached_iconv(const char* a_to, const char* a_from) {
    thread_local handle_cache cache;
    return cache.get(a_to, a_from);
}

} // namespace qiro_plugin::string_encode::detail

#include "runtime/sha_hash.hpp"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <mutex>
#include <stdexcept>

namespace qiro_plugin {

namespace {

// The system's OpenSSL configuration file can load providers and engines we never use and
// costs a millisecond on every plug-in run; the built-in default provider has SHA-1.
void initialise_crypto_once() {
    static std::once_flag once;
    std::call_once(once, [] { OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr); });
}

} // namespace

std::string create_sha_hash(const std::string& a_text) {
    if (a_text.empty()) {
        return {};
    }
    initialise_crypto_once();
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int digest_length = 0;
    if (EVP_Digest(a_text.data(), a_text.size(), digest, &digest_length, EVP_sha1(), nullptr) !=
        1) {
        throw std::runtime_error("create_sha_hash() : failed");
    }
    static constexpr char hex_digits[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(digest_length * 2);
    for (unsigned int i = 0; i < digest_length; ++i) {
        result += hex_digits[digest[i] >> 4];
        result += hex_digits[digest[i] & 0x0F];
    }
    return result;
}

} // namespace qiro_plugin

#include "runtime/sha_hash.hpp"

#include <openssl/evp.h>

#include <stdexcept>

namespace qiro_plugin {

std::string create_sha_hash(const std::string& a_text) {
    if (a_text.empty()) {
        return {};
    }
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

#include "runtime/sha_hash.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace qiro_plugin {

namespace {

// SHA-1 (FIPS 180-4) written out here: the digest only names a temporary file, and
// OpenSSL 3 spent more than a millisecond of every plug-in run loading libcrypto and
// building its algorithm name map before the first digest.
class sha1 {
public:
    void update(const unsigned char* a_data, std::size_t a_size) {
        m_length += a_size;
        while (a_size > 0) {
            const std::size_t take = std::min(a_size, m_block.size() - m_filled);
            std::copy_n(a_data, take, m_block.begin() + static_cast<std::ptrdiff_t>(m_filled));
            m_filled += take;
            a_data += take;
            a_size -= take;
            if (m_filled == m_block.size()) {
                compress();
                m_filled = 0;
            }
        }
    }

    std::array<unsigned char, 20> finish() {
        const std::uint64_t bit_length = m_length * 8;
        static constexpr unsigned char first_pad = 0x80;
        static constexpr unsigned char zero = 0;
        update(&first_pad, 1);
        while (m_filled != 56) {
            update(&zero, 1);
        }
        std::array<unsigned char, 8> length_bytes{};
        for (std::size_t i = 0; i < 8; ++i) {
            length_bytes[i] = static_cast<unsigned char>(bit_length >> (56 - 8 * i));
        }
        update(length_bytes.data(), length_bytes.size());
        std::array<unsigned char, 20> digest{};
        for (std::size_t i = 0; i < 20; ++i) {
            digest[i] = static_cast<unsigned char>(m_state[i / 4] >> (24 - 8 * (i % 4)));
        }
        return digest;
    }

private:
    void compress() {
        std::array<std::uint32_t, 80> w{};
        for (std::size_t i = 0; i < 16; ++i) {
            w[i] = (std::uint32_t{m_block[4 * i]} << 24) |
                   (std::uint32_t{m_block[4 * i + 1]} << 16) |
                   (std::uint32_t{m_block[4 * i + 2]} << 8) | std::uint32_t{m_block[4 * i + 3]};
        }
        for (std::size_t i = 16; i < 80; ++i) {
            w[i] = std::rotl(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
        }
        auto [a, b, c, d, e] = m_state;
        for (std::size_t i = 0; i < 80; ++i) {
            std::uint32_t f = 0;
            std::uint32_t k = 0;
            if (i < 20) {
                f = (b & c) | (~b & d);
                k = 0x5A827999;
            } else if (i < 40) {
                f = b ^ c ^ d;
                k = 0x6ED9EBA1;
            } else if (i < 60) {
                f = (b & c) | (b & d) | (c & d);
                k = 0x8F1BBCDC;
            } else {
                f = b ^ c ^ d;
                k = 0xCA62C1D6;
            }
            const std::uint32_t next = std::rotl(a, 5) + f + e + k + w[i];
            e = d;
            d = c;
            c = std::rotl(b, 30);
            b = a;
            a = next;
        }
        m_state[0] += a;
        m_state[1] += b;
        m_state[2] += c;
        m_state[3] += d;
        m_state[4] += e;
    }

    std::array<std::uint32_t, 5> m_state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                         0xC3D2E1F0};
    std::array<unsigned char, 64> m_block{};
    std::size_t m_filled = 0;
    std::uint64_t m_length = 0;
};

} // namespace

std::string create_sha_hash(const std::string& a_text) {
    if (a_text.empty()) {
        return {};
    }
    sha1 digest_state;
    digest_state.update(reinterpret_cast<const unsigned char*>(a_text.data()), a_text.size());
    static constexpr char hex_digits[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(40);
    for (const unsigned char byte : digest_state.finish()) {
        result += hex_digits[byte >> 4];
        result += hex_digits[byte & 0x0F];
    }
    return result;
}

} // namespace qiro_plugin

#pragma once
// The tables between key codes and key names of the keys assignable to plug-in functions.

#include "text/utf16_string.hpp"

#include <cstdint>
#include <memory>
#include <vector>

namespace qiro_plugin {

class zul_key_access {
public:
    // The key assignable to changing candidates with a plug-in.
    static constexpr std::uint32_t TYPE_QIRO_LUMEN_CANDIDATE_CHANGE = 0;
    // The keys assignable to calling up one of the numbered plug-ins.
    static constexpr std::uint32_t TYPE_QIRO_LUMEN_PLUGIN_N_SEARCH = 1;

    static constexpr std::uint32_t SHIFT_KEY_BIT = 0x0400;
    static constexpr std::uint32_t CTRL_KEY_BIT = 0x1000;
    static constexpr std::uint32_t OPTION_KEY_BIT = 0x2000;

    // The shared table of the type, built on first use; any other type ends the process.
    static zul_key_access& getInstance(std::uint32_t a_type);

    zul_key_access(const zul_key_access&) = delete;
    zul_key_access& operator=(const zul_key_access&) = delete;
    ~zul_key_access();

    // The base names in the order a settings screen offers them.
    std::vector<utf16_string> get_key_list() const;
    bool is_zul_key(std::uint32_t a_key_code) const;
    // The entry of the key list with the modifiers; throws std::runtime_error when the index
    // is out of range or that combination is not assignable.
    std::uint32_t get_zul_key(bool a_shift, bool a_ctrl, bool a_option, std::int32_t a_index) const;
    // Throws std::runtime_error when the index is out of range.
    bool is_zul_key(bool a_shift, bool a_ctrl, bool a_option, std::int32_t a_index) const;
    // The following throw std::runtime_error for a code the table does not hold.
    utf16_string get_zul_key_name(std::uint32_t a_key_code) const;
    bool get_zul_key_state_shift(std::uint32_t a_key_code) const;
    bool get_zul_key_state_ctrl(std::uint32_t a_key_code) const;
    bool get_zul_key_state_option(std::uint32_t a_key_code) const;

private:
    explicit zul_key_access(std::uint32_t a_type);

    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin

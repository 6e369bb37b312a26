#include "keys/zul_key_access.hpp"

#include "platform/failed_assertion.hpp"
#include "platform/localized_string.hpp"

#include <cstdlib>
#include <map>
#include <mutex>
#include <stdexcept>

namespace qiro_plugin {

namespace {

const utf16_string SHIFT_KEY_NAME = u"【shift】";
const utf16_string CTRL_KEY_NAME = u"【ctrl】";
const utf16_string OPTION_KEY_NAME = u"【option】";

utf16_string full_name(const utf16_string& a_base, bool a_shift, bool a_ctrl, bool a_option) {
    utf16_string name = a_base;
    if (a_shift) {
        name += SHIFT_KEY_NAME;
    }
    if (a_ctrl) {
        name += CTRL_KEY_NAME;
    }
    if (a_option) {
        name += OPTION_KEY_NAME;
    }
    return name;
}

std::uint32_t modifier_bits(bool a_shift, bool a_ctrl, bool a_option) {
    return (a_shift ? zul_key_access::SHIFT_KEY_BIT : 0U) |
           (a_ctrl ? zul_key_access::CTRL_KEY_BIT : 0U) |
           (a_option ? zul_key_access::OPTION_KEY_BIT : 0U);
}

} // namespace

struct zul_key_access::impl {
    std::vector<utf16_string> m_key_list;
    std::map<utf16_string, std::uint32_t> m_name_to_code;
    std::map<std::uint32_t, utf16_string> m_code_to_name;

    explicit impl(std::uint32_t a_type);

    void set_map(std::uint32_t a_code, const utf16_string& a_name) {
        m_name_to_code[a_name] = a_code;
        m_code_to_name[a_code] = a_name;
    }

    void set_map_with_allmodifiers(std::uint32_t a_code, const utf16_string& a_name) {
        m_key_list.push_back(a_name);
        for (int combination = 0; combination < 8; ++combination) {
            const bool shift = (combination & 1) != 0;
            const bool ctrl = (combination & 2) != 0;
            const bool option = (combination & 4) != 0;
            set_map(a_code + modifier_bits(shift, ctrl, option),
                    full_name(a_name, shift, ctrl, option));
        }
    }

    // A character key alone or with shift types text, so only ctrl and option combinations
    // are assignable.
    void set_mojikey_map_with_allmodifiers(std::uint32_t a_code, const utf16_string& a_name) {
        m_key_list.push_back(a_name);
        for (int combination = 2; combination < 8; ++combination) {
            const bool shift = (combination & 1) != 0;
            const bool ctrl = (combination & 2) != 0;
            const bool option = (combination & 4) != 0;
            set_map(a_code + modifier_bits(shift, ctrl, option),
                    full_name(a_name, shift, ctrl, option));
        }
    }

    // With ctrl the key sends its control code; with option alone or with shift, the
    // lower-case letter (or the character itself for the punctuation keys).
    void set_control_letter_map(const utf16_string& a_name, std::uint32_t a_control_code,
                                std::uint32_t a_option_code) {
        m_key_list.push_back(a_name);
        set_map(a_control_code + CTRL_KEY_BIT, full_name(a_name, false, true, false));
        set_map(a_control_code + SHIFT_KEY_BIT + CTRL_KEY_BIT,
                full_name(a_name, true, true, false));
        set_map(a_option_code + OPTION_KEY_BIT, full_name(a_name, false, false, true));
        set_map(a_option_code + SHIFT_KEY_BIT + OPTION_KEY_BIT,
                full_name(a_name, true, false, true));
        set_map(a_control_code + CTRL_KEY_BIT + OPTION_KEY_BIT,
                full_name(a_name, false, true, true));
        set_map(a_control_code + SHIFT_KEY_BIT + CTRL_KEY_BIT + OPTION_KEY_BIT,
                full_name(a_name, true, true, true));
    }

    const utf16_string& name_of(std::uint32_t a_key_code) const {
        const auto found = m_code_to_name.find(a_key_code);
        if (found == m_code_to_name.end()) {
            throw std::runtime_error("zul_key_access::get_zul_key_state_shift() fault.");
        }
        return found->second;
    }
};

zul_key_access::impl::impl(std::uint32_t a_type) {
    QIRO_ASSERT(a_type == TYPE_QIRO_LUMEN_CANDIDATE_CHANGE ||
                a_type == TYPE_QIRO_LUMEN_PLUGIN_N_SEARCH);
    const bool all = a_type == TYPE_QIRO_LUMEN_PLUGIN_N_SEARCH;

    set_map_with_allmodifiers(32, u"space");
    set_map_with_allmodifiers(265, u"tab");
    if (all) {
        set_map_with_allmodifiers(283, u"Esc");
    }
    set_map_with_allmodifiers(264, u"delete");
    if (all) {
        set_map_with_allmodifiers(269, u"return");
        set_map_with_allmodifiers(367, u"enter");
    }
    set_map_with_allmodifiers(358, u"←");
    set_map_with_allmodifiers(359, u"→");
    set_map_with_allmodifiers(357, u"↑");
    set_map_with_allmodifiers(360, u"↓");
    set_map_with_allmodifiers(361, u"home");
    set_map_with_allmodifiers(362, u"end");
    set_map_with_allmodifiers(354, u"pg up");
    set_map_with_allmodifiers(353, u"pg dn");
    for (std::uint32_t number = 1; number <= 15; ++number) {
        utf16_string name = u"F";
        if (number >= 10) {
            name += static_cast<char16_t>(u'0' + number / 10);
        }
        name += static_cast<char16_t>(u'0' + number % 10);
        set_map_with_allmodifiers(288 + number, name);
    }
    if (all) {
        set_map_with_allmodifiers(336, u"かな");
        set_map_with_allmodifiers(338, u"英数");
    }
    set_map_with_allmodifiers(355, u"help");
    if (all) {
        set_map_with_allmodifiers(356, utility::localized_string("keyDeleteX"));
    }
    set_map_with_allmodifiers(327, u"clear");

    set_control_letter_map(u"@", 0x00, 0x40);
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
        set_control_letter_map(utf16_string(1, letter), letter - 0x40U, letter + 0x20U);
    }
    set_control_letter_map(u"[", 27, 0x5B);
    set_control_letter_map(u"¥", 28, 0x5C);
    set_control_letter_map(u"]", 29, 0x5D);
    set_control_letter_map(u"^", 30, 0x5E);
    set_control_letter_map(u"_", 31, 0x5F);

    set_mojikey_map_with_allmodifiers(42, u"*");
    set_mojikey_map_with_allmodifiers(43, u"+");
    set_mojikey_map_with_allmodifiers(44, u",");
    if (all) {
        set_mojikey_map_with_allmodifiers(45, u"-");
    }
    set_mojikey_map_with_allmodifiers(46, u".");
    set_mojikey_map_with_allmodifiers(47, u"/");
    set_mojikey_map_with_allmodifiers(58, u":");
    set_mojikey_map_with_allmodifiers(59, u";");
    set_mojikey_map_with_allmodifiers(61, u"=");
    if (all) {
        set_mojikey_map_with_allmodifiers(96, u"`");
        set_mojikey_map_with_allmodifiers(39, u"'");
    }
    for (char16_t digit = u'1'; digit <= u'9'; ++digit) {
        set_mojikey_map_with_allmodifiers(digit, utf16_string(1, digit));
    }
    set_mojikey_map_with_allmodifiers(u'0', u"0");
}

zul_key_access& zul_key_access::getInstance(std::uint32_t a_type) {
    // Function-local statics are built once even when first calls race.
    if (a_type == TYPE_QIRO_LUMEN_CANDIDATE_CHANGE) {
        static zul_key_access candidate_change(TYPE_QIRO_LUMEN_CANDIDATE_CHANGE);
        return candidate_change;
    }
    if (a_type == TYPE_QIRO_LUMEN_PLUGIN_N_SEARCH) {
        static zul_key_access plugin_n_search(TYPE_QIRO_LUMEN_PLUGIN_N_SEARCH);
        return plugin_n_search;
    }
    QIRO_ASSERT(false);
    std::abort();
}

zul_key_access::zul_key_access(std::uint32_t a_type) : p_impl(std::make_unique<impl>(a_type)) {}

zul_key_access::~zul_key_access() = default;

std::vector<utf16_string> zul_key_access::get_key_list() const {
    return p_impl->m_key_list;
}

bool zul_key_access::is_zul_key(std::uint32_t a_key_code) const {
    return p_impl->m_code_to_name.contains(a_key_code);
}

std::uint32_t zul_key_access::get_zul_key(bool a_shift, bool a_ctrl, bool a_option,
                                          std::int32_t a_index) const {
    if (a_index < 0 || static_cast<std::size_t>(a_index) >= p_impl->m_key_list.size()) {
        throw std::runtime_error("zul_key_access::get_zul_key() fault.");
    }
    const auto found = p_impl->m_name_to_code.find(full_name(
        p_impl->m_key_list[static_cast<std::size_t>(a_index)], a_shift, a_ctrl, a_option));
    if (found == p_impl->m_name_to_code.end()) {
        throw std::runtime_error("zul_key_access::get_zul_key() fault.");
    }
    return found->second;
}

bool zul_key_access::is_zul_key(bool a_shift, bool a_ctrl, bool a_option,
                                std::int32_t a_index) const {
    if (a_index < 0 || static_cast<std::size_t>(a_index) >= p_impl->m_key_list.size()) {
        throw std::runtime_error("zul_key_access::is_zul_key() fault.");
    }
    return p_impl->m_name_to_code.contains(full_name(
        p_impl->m_key_list[static_cast<std::size_t>(a_index)], a_shift, a_ctrl, a_option));
}

utf16_string zul_key_access::get_zul_key_name(std::uint32_t a_key_code) const {
    utf16_string name = p_impl->name_of(a_key_code);
    for (const auto* mark : {&SHIFT_KEY_NAME, &CTRL_KEY_NAME, &OPTION_KEY_NAME}) {
        const auto position = name.find(*mark);
        if (position != utf16_string::npos) {
            name.erase(position);
        }
    }
    return name;
}

bool zul_key_access::get_zul_key_state_shift(std::uint32_t a_key_code) const {
    return p_impl->name_of(a_key_code).find(SHIFT_KEY_NAME) != utf16_string::npos;
}

bool zul_key_access::get_zul_key_state_ctrl(std::uint32_t a_key_code) const {
    return p_impl->name_of(a_key_code).find(CTRL_KEY_NAME) != utf16_string::npos;
}

bool zul_key_access::get_zul_key_state_option(std::uint32_t a_key_code) const {
    return p_impl->name_of(a_key_code).find(OPTION_KEY_NAME) != utf16_string::npos;
}

} // namespace qiro_plugin

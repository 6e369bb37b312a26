#include "keys/zul_key_access.hpp"
#include "platform/localized_string.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <tuple>

namespace {

using qiro_plugin::utf16_string;
using qiro_plugin::zul_key_access;

const utf16_string forward_delete_name = u"⌦";

// The tables read the forward-delete key's name once, so the text must be in place before
// any test builds them.
class localized_names : public ::testing::Environment {
public:
    void SetUp() override {
        qiro_plugin::utility::set_localized_string_provider([](const std::string& a_key) {
            return a_key == "keyDeleteX" ? forward_delete_name : utf16_string();
        });
    }
};
const auto* const environment = ::testing::AddGlobalTestEnvironment(new localized_names);

zul_key_access& candidate_change() {
    return zul_key_access::getInstance(zul_key_access::TYPE_QIRO_LUMEN_CANDIDATE_CHANGE);
}
zul_key_access& plugin_n_search() {
    return zul_key_access::getInstance(zul_key_access::TYPE_QIRO_LUMEN_PLUGIN_N_SEARCH);
}

std::int32_t index_of(const zul_key_access& a_table, const utf16_string& a_name) {
    const auto list = a_table.get_key_list();
    const auto found = std::find(list.begin(), list.end(), a_name);
    EXPECT_NE(found, list.end()) << std::string(a_name.begin(), a_name.end());
    return static_cast<std::int32_t>(found - list.begin());
}

// The failure of an impossible lookup, named by the function that reports it.
auto fails_in(const std::string& a_function) {
    return testing::ThrowsMessage<std::runtime_error>("zul_key_access::" + a_function +
                                                      "() fault.");
}

// The candidate-change table is the plug-in table without the keys that act on the
// candidate window itself, in the same order.
TEST(zul_key_access_test, the_two_tables_list_their_names_in_settings_order) {
    const auto all = plugin_n_search().get_key_list();
    ASSERT_EQ(all.size(), 87U);
    EXPECT_EQ(all.front(), u"space");
    EXPECT_EQ(all[static_cast<std::size_t>(index_of(plugin_n_search(), u"help")) + 1],
              forward_delete_name);
    EXPECT_EQ(all.back(), u"0");
    const std::vector<utf16_string> only_plugin = {u"Esc", u"return", u"enter", u"かな", u"英数",
                                                   u"⌦",   u"-",      u"`",     u"'"};
    auto reduced = all;
    std::erase_if(reduced, [&](const utf16_string& a_name) {
        return std::find(only_plugin.begin(), only_plugin.end(), a_name) != only_plugin.end();
    });
    EXPECT_EQ(candidate_change().get_key_list(), reduced);
}

TEST(zul_key_access_test, documented_combinations_have_their_codes) {
    // Table, shift, ctrl, option, key name, code.
    using row = std::tuple<zul_key_access& (*)(), bool, bool, bool, utf16_string, std::uint32_t>;
    const row cases[] = {
        {candidate_change, true, false, true, u"F5", 9509U},
        {candidate_change, false, false, false, u"tab", 265U},
        {candidate_change, true, true, false, u"tab", 265U + 0x1400U},
        {candidate_change, false, false, false, u"pg dn", 353U},
        {candidate_change, false, true, false, u"F15", 303U + 0x1000U},
        {plugin_n_search, false, false, false, u"英数", 338U},
        {plugin_n_search, false, false, false, u"⌦", 356U},
        {plugin_n_search, false, true, true, u"⌦", 356U + 0x3000U},
        {plugin_n_search, true, true, false, u"Esc", 283U + 0x1400U},
        {plugin_n_search, true, true, true, u"'", 39U + 0x3400U},
        {plugin_n_search, false, true, false, u"-", 45U + 0x1000U},
        // Letters and characters need ctrl or option; ctrl gives the control character.
        {candidate_change, false, true, false, u"A", 0x1001U},
        {candidate_change, false, false, true, u"A", 0x2061U},
        {candidate_change, true, true, true, u"A", 0x3401U},
        {candidate_change, false, true, false, u"@", 0x1000U},
        {candidate_change, false, false, true, u"Z", 0x207AU},
        {candidate_change, false, false, true, u"¥", 0x205CU},
        {candidate_change, false, true, true, u"_", 0x301FU},
        {candidate_change, false, true, false, u"1", 0x1031U},
        {candidate_change, true, false, true, u"0", 0x2430U},
    };
    for (const auto& [table, shift, ctrl, option, name, code] : cases) {
        const auto& keys = table();
        EXPECT_EQ(keys.get_zul_key(shift, ctrl, option, index_of(keys, name)), code) << code;
        EXPECT_TRUE(keys.is_zul_key(code)) << code;
        EXPECT_EQ(keys.get_zul_key_name(code), name) << code;
        EXPECT_EQ(keys.get_zul_key_state_shift(code), shift) << code;
        EXPECT_EQ(keys.get_zul_key_state_ctrl(code), ctrl) << code;
        EXPECT_EQ(keys.get_zul_key_state_option(code), option) << code;
    }
    // Keys of the plug-in table alone, and a letter without ctrl or option.
    for (const std::uint32_t missing : {269U, 356U, 45U + 0x1000U, 0x41U}) {
        EXPECT_FALSE(candidate_change().is_zul_key(missing)) << missing;
    }
    EXPECT_FALSE(plugin_n_search().is_zul_key(0xFFFFFFFFU));
}

TEST(zul_key_access_test, impossible_lookups_fail_with_their_texts) {
    const auto& table = plugin_n_search();
    const auto get_failure = fails_in("get_zul_key");
    const auto letter_a = index_of(table, u"A");
    EXPECT_FALSE(table.is_zul_key(false, false, false, letter_a));
    EXPECT_THAT([&] { table.get_zul_key(false, false, false, letter_a); }, get_failure);
    EXPECT_THAT([&] { table.get_zul_key(true, false, false, letter_a); }, get_failure);
    EXPECT_THAT([&] { table.get_zul_key(true, false, false, index_of(table, u"1")); }, get_failure);
    // One before the first name and one past the last.
    for (const std::int32_t outside : {-1, 87}) {
        EXPECT_THAT([&] { table.get_zul_key(false, true, false, outside); }, get_failure);
        EXPECT_THAT([&] { table.is_zul_key(false, true, false, outside); }, fails_in("is_zul_key"));
    }
    // Every lookup by code reports its failure under the shift lookup's name.
    const auto code_failure = fails_in("get_zul_key_state_shift");
    EXPECT_THAT([&] { table.get_zul_key_name(0x41U); }, code_failure);
    EXPECT_THAT([&] { table.get_zul_key_state_shift(0x41U); }, code_failure);
    EXPECT_THAT([&] { table.get_zul_key_state_ctrl(0x41U); }, code_failure);
    EXPECT_THAT([&] { table.get_zul_key_state_option(0x41U); }, code_failure);
}

TEST(zul_key_access_death_test, an_unknown_table_type_ends_the_process) {
    EXPECT_DEATH(zul_key_access::getInstance(2), "failed assertion `false'");
}

} // namespace

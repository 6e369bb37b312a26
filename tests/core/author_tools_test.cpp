#include "core/change_watch.hpp"
#include "core/debug_runner.hpp"
#include "core/pane_text_sink.hpp"
#include "core/plugin_templates.hpp"
#include "core/run_history.hpp"
#include "support/run_fakes.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace qiro_plugin::debugger {
namespace {

using test_support::read_file;
using test_support::scratch_folder;
using test_support::write_file;

utf16_string folder_of(const std::filesystem::path& a_folder) {
    const std::string text = a_folder.string() + "/";
    return {text.begin(), text.end()};
}

TEST(plugin_templates, a_new_plugin_of_each_language_runs_all_three_entries) {
    scratch_folder home;
    ::setenv("HOME", home.path().c_str(), 1);
    ::setenv("PATH", ("/usr/bin:/bin:" + std::string(std::getenv("PATH"))).c_str(), 1);
    pane_text_sink panes;
    testing::recording_sinks alerts;
    debug_runner runner(panes, alerts);
    for (const auto language :
         {template_language::python, template_language::ruby, template_language::perl}) {
        const std::string name = "new_" + std::string(template_extension(language));
        const auto created = create_plugin_from_template(home.path(), language, name);
        const plugin_entry plugin{folder_of(home.path()),
                                  utf16_string(created.plugin_file.filename().u16string())};

        const auto report = runner.run(processing_request(plugin, u"変換", u"へんかん"));
        ASSERT_EQ(report.result, run_report::outcome::completed) << name;
        EXPECT_TRUE(report.document_parsed) << report.run_std_output;
        ASSERT_EQ(report.candidates.size(), 1u) << name;
        EXPECT_EQ(report.candidates[0].title, u"変換");
        EXPECT_EQ(report.candidates[0].alternative_type, u"definite_string");
        EXPECT_EQ(report.candidates[0].info, utf16_string(name.begin(), name.end()));
        EXPECT_TRUE(report.run_std_error.empty()) << report.run_std_error;

        const auto callback = runner.run(callback_request(plugin, u"変換", u"変換"));
        EXPECT_EQ(callback.result, run_report::outcome::completed) << name;
        EXPECT_EQ(callback.run_std_error, "committed: 変換\n") << name;
        EXPECT_EQ(runner.run(preference_request(plugin)).result, run_report::outcome::completed)
            << name;
    }
    EXPECT_EQ(alerts.log(), "");
}

TEST(plugin_templates, bad_names_and_existing_files_are_refused_leaving_nothing_behind) {
    scratch_folder folder;
    for (const char* name : {"", ".hidden", "a/b", "quote'd", "dollar$", "tab\there"}) {
        EXPECT_THROW(create_plugin_from_template(folder.path(), template_language::python, name),
                     std::runtime_error)
            << name;
    }
    write_file(folder.path() / "taken.xml", "mine");
    EXPECT_THROW(create_plugin_from_template(folder.path(), template_language::ruby, "taken"),
                 std::runtime_error);
    write_file(folder.path() / "taken.pl", "mine too");
    EXPECT_THROW(create_plugin_from_template(folder.path(), template_language::perl, "taken.pl"),
                 std::runtime_error);
    EXPECT_EQ(read_file(folder.path() / "taken.xml"), "mine");
    EXPECT_EQ(read_file(folder.path() / "taken.pl"), "mine too");
    EXPECT_EQ(test_support::names_in(folder.path()).size(), 2U);
    // A name with characters that must be escaped in the document stays well-formed there.
    EXPECT_NE(preference_template_text("a>b").find("<name>a&gt;b</name>"), std::string::npos);
}

message_script::candidate candidate(const char16_t* a_title, const char16_t* a_info = u"") {
    message_script::candidate made;
    made.title = a_title;
    made.info = a_info;
    return made;
}

TEST(run_history, keeps_twenty_newest_first_and_cuts_outputs_at_a_character) {
    run_history history;
    for (int index = 0; index < 25; ++index) {
        history_entry entry;
        entry.written_form = utf16_string(1, static_cast<char16_t>(u'a' + index));
        history.add(entry);
    }
    ASSERT_EQ(history.entries().size(), run_history::capacity);
    EXPECT_EQ(history.entries().front().written_form, u"y");
    EXPECT_EQ(history.entries().back().written_form, u"f");

    history_entry large;
    // "é" is two bytes and straddles the limit, so the cut keeps one byte fewer.
    large.report.run_std_output = std::string(run_history::output_limit - 1, 'x') + "é tail";
    large.report.run_std_error = "short";
    history.add(large);
    EXPECT_TRUE(history.entries().front().outputs_cut);
    EXPECT_EQ(history.entries().front().report.run_std_output,
              std::string(run_history::output_limit - 1, 'x'));
    EXPECT_EQ(history.entries().front().report.run_std_error, "short");
}

TEST(run_history, candidate_differences_match_by_title_and_occurrence) {
    const std::vector first{candidate(u"a"), candidate(u"b", u"old"), candidate(u"c"),
                            candidate(u"c")};
    const std::vector second{candidate(u"b", u"new"), candidate(u"a"), candidate(u"c"),
                             candidate(u"d")};
    const auto difference = compare_candidates(first, second);
    ASSERT_EQ(difference.removed.size(), 1u); // the second "c"
    EXPECT_EQ(difference.removed[0].title, u"c");
    ASSERT_EQ(difference.added.size(), 1u);
    EXPECT_EQ(difference.added[0].title, u"d");
    ASSERT_EQ(difference.changed.size(), 1u);
    EXPECT_EQ(difference.changed[0].first.info, u"old");
    EXPECT_EQ(difference.changed[0].second.info, u"new");
    EXPECT_TRUE(difference.order_changed);

    const auto same = compare_candidates(second, second);
    EXPECT_TRUE(same.empty());
    EXPECT_FALSE(same.order_changed);
}

TEST(change_watch, a_burst_of_saves_gives_one_rerun_after_quiet_and_after_the_run) {
    using namespace std::chrono_literals;
    change_debouncer debouncer(300ms);
    const auto start = change_debouncer::clock::now();
    EXPECT_FALSE(debouncer.take_due(start + 1s, false)) << "nothing changed";
    debouncer.note_change(start);
    debouncer.note_change(start + 200ms);
    EXPECT_FALSE(debouncer.take_due(start + 400ms, false)) << "still within the burst";
    EXPECT_FALSE(debouncer.take_due(start + 600ms, true)) << "a run is going";
    EXPECT_TRUE(debouncer.take_due(start + 700ms, false));
    EXPECT_FALSE(debouncer.take_due(start + 800ms, false)) << "once per burst";

    scratch_folder folder;
    const plugin_entry plugin{folder_of(folder.path()), u"watched.py"};
    const auto files = watched_files(plugin);
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[1], folder.path() / "watched.xml");
    const auto nothing = file_snapshot::take(files);
    write_file(files[0], "one");
    const auto written = file_snapshot::take(files);
    EXPECT_FALSE(written == nothing);
    std::filesystem::last_write_time(files[0], std::filesystem::last_write_time(files[0]) + 2s);
    EXPECT_FALSE(file_snapshot::take(files) == written) << "same size, newer time";
    EXPECT_TRUE(file_snapshot::take(files) == file_snapshot::take(files));
    std::filesystem::remove(files[0]);
    EXPECT_TRUE(file_snapshot::take(files) == nothing);
}

} // namespace
} // namespace qiro_plugin::debugger

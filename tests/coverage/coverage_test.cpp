#include "coverage/coverage_readers.hpp"
#include "coverage/coverage_tools.hpp"
#include "coverage/coverage_writers.hpp"
#include "support/cobertura_dtd.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

namespace qiro_plugin::coverage {
namespace {

using lines = std::map<unsigned, std::uint64_t>;
using branches = std::map<branch_key, std::uint64_t>;

TEST(coverage_readers, coverage_py_lines_count_once_and_arcs_number_by_destination) {
    const auto files = read_coverage_py_json(R"({"files": {"my.py": {
        "executed_lines": [1, 2, 5], "missing_lines": [3], "excluded_lines": [4],
        "executed_branches": [[2, 5], [5, -1]], "missing_branches": [[2, 3]]}}})",
                                             "/run/");
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].path, "/run/my.py");
    EXPECT_EQ(files[0].lines, (lines{{1, 1}, {2, 1}, {3, 0}, {5, 1}}));
    EXPECT_EQ(files[0].branches, (branches{{{2, 0, 0}, 0}, {{2, 0, 1}, 1}, {{5, 0, 0}, 1}}));
    EXPECT_THROW(read_coverage_py_json("{\"meta\": {}}", "/"), std::runtime_error);
    EXPECT_THROW(read_coverage_py_json(R"({"files": {"a": {"executed_lines": "x"}}})", "/"),
                 std::runtime_error);
}

TEST(coverage_readers, ruby_decisions_of_one_line_are_blocks_in_ruby_order) {
    const auto files = read_ruby_coverage_dump("file /p/my.rb\nlines - 3 0 -\n"
                                               "branch 7 2 9 1\nbranch 7 2 8 2\n"
                                               "branch 4 2 5 0\nbranch 4 2 6 3\n");
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].path, "/p/my.rb");
    EXPECT_EQ(files[0].lines, (lines{{2, 3}, {3, 0}}));
    EXPECT_EQ(files[0].branches,
              (branches{{{2, 0, 0}, 0}, {{2, 0, 1}, 3}, {{2, 1, 0}, 2}, {{2, 1, 1}, 1}}));
    EXPECT_THROW(read_ruby_coverage_dump("lines 1\n"), std::runtime_error);
    EXPECT_THROW(read_ruby_coverage_dump("file x\nlines 1 y\n"), std::runtime_error);
}

TEST(coverage_readers, devel_cover_lines_are_reached_when_one_statement_is) {
    const auto files = read_devel_cover_dump("file /p/my.pl\nstatement 3 0\nstatement 3 2\n"
                                             "statement 4 0\nbranch 3 0 2 0\nbranch 3 1 0 1\n");
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].lines, (lines{{3, 2}, {4, 0}}));
    EXPECT_EQ(files[0].branches,
              (branches{{{3, 0, 0}, 2}, {{3, 0, 1}, 0}, {{3, 1, 0}, 0}, {{3, 1, 1}, 1}}));
    EXPECT_THROW(read_devel_cover_dump("file x\nstatement 0 1\n"), std::runtime_error);
}

TEST(coverage_tools, only_the_plugin_file_is_taken_and_relative_names_are_the_run_folder_s) {
    test_support::scratch_folder folder;
    test_support::write_file(folder.path() / "my.py", "x = 1\n");
    std::vector<file_coverage> files(2);
    files[0] = {"/usr/lib/python3/dist-packages/my.py", {{1, 1}}, {}};
    files[1] = {"my.py", {{1, 4}}, {}};
    const std::string plugin = (folder.path() / "my.py").string();
    const auto found = plugin_record(files, plugin, folder.path().string());
    EXPECT_EQ(found.path, plugin);
    EXPECT_EQ(found.lines, (lines{{1, 4}}));
    EXPECT_TRUE(plugin_record(files, plugin, "/elsewhere").lines.empty());
}

TEST(coverage_tools, search_paths_and_options_already_set_are_kept) {
    const auto variables =
        coverage_variables(*tool_for("ruby"), "/d/f", "/p/my.rb", [](const char* a_name) {
            return std::string(a_name) == "RUBYOPT" ? "-W0" : nullptr;
        });
    ASSERT_EQ(variables.size(), 4U);
    EXPECT_EQ(variables[1],
              (std::pair<std::string, std::string>{"RUBYOPT", "-W0 -rqiro_coverage"}));
    EXPECT_EQ(collect_command(*tool_for("perl"), "/d/it's"),
              "perl '/d/it'\\''s/coverage_collect.pl' '/d/it'\\''s/cover_db'");
    EXPECT_EQ(tool_for("sh"), nullptr);
}

file_coverage sample() {
    return {
        "/p/a&b/my.py", {{1, 2}, {2, 0}, {3, 1}}, {{{1, 0, 0}, 2}, {{1, 0, 1}, 0}, {{2, 0, 0}, 0}}};
}

// Merging, the first line not reached and rounding down are seen through the cases' runs.
TEST(coverage_record, a_file_without_branches_or_lines_still_sums_up) {
    EXPECT_EQ(summary_line("my.pl", summarize({"x", {{1, 1}, {2, 1}, {3, 0}}, {}})),
              "my.pl: 2 of 3 lines (66 %)");
    EXPECT_EQ(summary_line("empty.rb", summarize({})), "empty.rb: 0 of 0 lines (100 %)");
}

TEST(coverage_writers, the_tracefile_marks_branches_of_lines_never_reached) {
    EXPECT_EQ(lcov_tracefile({sample()}), "TN:\nSF:/p/a&b/my.py\n"
                                          "BRDA:1,0,0,2\nBRDA:1,0,1,0\nBRDA:2,0,0,-\n"
                                          "BRF:3\nBRH:1\n"
                                          "DA:1,2\nDA:2,0\nDA:3,1\nLF:3\nLH:2\nend_of_record\n");
}

TEST(coverage_writers, cobertura_validates_against_its_document_type) {
    auto other = sample();
    other.path = "/q/\"odd\" <name>.rb";
    const auto document = cobertura_xml({sample(), other}, "qiro-lumen 1.0", 1700000000000);
    EXPECT_EQ(test_support::cobertura_dtd_error(document), "");
    EXPECT_NE(document.find("<coverage line-rate=\"0.6667\" branch-rate=\"0.3333\" "
                            "lines-covered=\"4\" lines-valid=\"6\" branches-covered=\"2\" "
                            "branches-valid=\"6\" complexity=\"0\" version=\"qiro-lumen 1.0\" "
                            "timestamp=\"1700000000000\">"),
              std::string::npos)
        << document;
    EXPECT_NE(document.find("<class name=\"&quot;odd&quot; &lt;name&gt;.rb\""), std::string::npos);
    EXPECT_NE(document.find("<line number=\"1\" hits=\"2\" branch=\"true\" "
                            "condition-coverage=\"50% (1/2)\"/>"),
              std::string::npos);
    EXPECT_NE(document.find("<line number=\"3\" hits=\"1\" branch=\"false\"/>"), std::string::npos);
    // A document that breaks the type is caught, so the check above means something.
    EXPECT_EQ(test_support::cobertura_dtd_error("<coverage line-rate=\"1\"><packages/></coverage>"),
              "invalid");
}

} // namespace
} // namespace qiro_plugin::coverage

#include "diagnosis/traceback_reader.hpp"

#include <gtest/gtest.h>

namespace qiro_plugin::diagnosis {
namespace {

// What each interpreter prints for the usual mistakes, as the bridges run plug-ins; no
// interpreter runs here. The bridge file names are the 40-digit names the runtime gives.
TEST(traceback_reader, each_languages_failures_are_read_to_their_kind_and_place) {
    const std::string bridge_py =
        "/h/Library/Preferences/QIRO Lumen/062E06A58ADD98F6AF6C33F4F5CC2EB3358A74F5.py";
    // The Perl bridge says on standard output that the plug-in would not load.
    const std::string perl_load = "error : plugin module load error.";
    const struct row {
        const char* name;
        const char* language;
        std::string std_output;
        std::string std_error;
        const char* plugin_file;
        failure_kind kind;
        std::optional<std::uint32_t> line;
    } rows[] = {
        {"python exception", "python", "",
         "Traceback (most recent call last):\n  File \"" + bridge_py +
             "\", line 214, in <module>\n    main()\n  File \"/p/plug.py\", line 6, in "
             "qiro_plugin_run_process\n    return helper(request)\n  File \"/p/plug.py\", line 2, "
             "in helper\n    raise KeyError(text)\nKeyError: '変換'\n",
         "plug.py", failure_kind::exception, 2},
        {"python entry missing", "python", "",
         "Traceback (most recent call last):\n  File \"" + bridge_py +
             "\", line 188, in main\n    entry = getattr(module, \"qiro_plugin_\" + method)\n"
             "AttributeError: module 'plug' has no attribute 'qiro_plugin_run_process'\n",
         "plug.py", failure_kind::entry_missing, std::nullopt},
        {"python syntax", "python", "",
         "Traceback (most recent call last):\n  File \"" + bridge_py +
             "\", line 61, in load_plugin\n    loader.exec_module(module)\n  File \"<frozen "
             "importlib._bootstrap_external>\", line 1074, in get_code\n  File \"/p/plug.py\", "
             "line 4\n    return {\n           ^\nSyntaxError: '{' was never closed\n",
         "plug.py", failure_kind::syntax, 4},
        {"ruby exception", "ruby", "",
         "/p/plug.rb:3:in `run_process': no dictionary (ArgumentError)\n\tfrom "
         "33FD15B82818337279437C720662BA06CED63EFB.rb:191:in `call'\n",
         "plug.rb", failure_kind::exception, 3},
        {"ruby syntax", "ruby", "",
         "<internal:/usr/lib/ruby/vendor_ruby/rubygems/core_ext/kernel_require.rb>:85:in "
         "`require': /p/plug.rb:3: syntax error, unexpected '}', expecting ']' (SyntaxError)\n"
         "\tfrom DABAE198293731873860DA66CAE1F69E3577F289.rb:100:in `load_plugin'\n",
         "plug.rb", failure_kind::syntax, 3},
        {"ruby load", "ruby", "",
         "<internal:/usr/lib/ruby/vendor_ruby/rubygems/core_ext/kernel_require.rb>:85:in "
         "`require': cannot load such file -- qiro_no_such_gem (LoadError)\n\tfrom "
         "/p/plug.rb:1:in `<top (required)>'\n\tfrom "
         "AD436A19115BC5B660C1F0EB7A4D181A068A9FF6.rb:100:in `load_plugin'\n",
         "plug.rb", failure_kind::load, 1},
        {"perl die", "perl", "", "no dictionary for the written form at /p/plug.pl line 4.\n",
         "plug.pl", failure_kind::exception, 4},
        {"perl syntax", "perl", perl_load,
         "syntax error at /p/plug.pl line 6, near \"}\"\nCompilation failed in require at "
         "F16735235EA5FB1EE32B06E1B35581F90A2CBFD2.pl line 38.\n",
         "plug.pl", failure_kind::syntax, 6},
        {"perl missing module", "perl", perl_load,
         "Can't locate Qiro/NoSuchModule.pm in @INC (you may need to install the "
         "Qiro::NoSuchModule module) (@INC contains: /etc/perl) at /p/plug.pl line 1.\nBEGIN "
         "failed--compilation aborted at /p/plug.pl line 1.\nCompilation failed in require at "
         "115937D589117D0C566AF7243F46F5728E476150.pl line 38.\n",
         "plug.pl", failure_kind::load, 1},
        {"nothing to read", "perl", "", "", "plug.pl", failure_kind::none, std::nullopt},
    };
    for (const auto& row : rows) {
        const auto reading =
            read_failure(row.language, row.std_output, row.std_error, row.plugin_file);
        EXPECT_EQ(reading.kind, row.kind) << row.name;
        EXPECT_EQ(reading.line, row.line) << row.name;
        EXPECT_EQ(reading.message.find("40F5"), std::string::npos) << row.name;
        for (const auto& frame : reading.frames) {
            EXPECT_FALSE(is_bridge_file(frame)) << row.name << ": " << frame;
        }
    }
}

} // namespace
} // namespace qiro_plugin::diagnosis

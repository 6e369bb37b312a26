#pragma once
// The hidden command behind the shell completions: what may follow the words typed so far.

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qiro_plugin::cli {

// A line that asks the shell to complete a folder name, or any file name, itself.
inline constexpr const char* complete_folders = "@folders";
inline constexpr const char* complete_files = "@files";

// What may take the place of the last word, given the words after the program's name: the
// subcommands and options of the command reached, a positional's choices, or the plug-in files
// of the folder (of --plugin-folder when given); one a line, plus perhaps one directive above.
std::vector<std::string> completions(const CLI::App& a_app,
                                     const std::vector<std::string>& a_words);

// Every visible command, one a line: its path ("settings set", empty for the program itself), a
// tab, and its option names separated by spaces; the documentation is checked against them.
std::vector<std::string> command_lines(const CLI::App& a_app);

// Adds "__complete -- WORD...", hidden from the help, which prints completions(a_app, words),
// or command_lines(a_app) when no word is given (the shells always give at least an empty one).
// It reads the command tree when it runs, so subcommands added later are offered too.
void add_completion_command(CLI::App& a_app);

} // namespace qiro_plugin::cli

#include "cli/completion.hpp"

#include "cli/cli_support.hpp"
#include "cli/settings_commands.hpp"
#include "text/utf8_text.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string_view>

namespace qiro_plugin::cli {

namespace {

bool takes_value(const CLI::Option& a_option) {
    return a_option.get_type_size_max() > 0;
}

bool is_named(const CLI::Option& a_option, std::string_view a_word) {
    for (const auto& name : a_option.get_lnames()) {
        if (a_word == "--" + name) {
            return true;
        }
    }
    for (const auto& name : a_option.get_snames()) {
        if (a_word == "-" + name) {
            return true;
        }
    }
    return false;
}

const CLI::Option* find_option(const CLI::App& a_command, std::string_view a_word) {
    for (const auto* option : a_command.get_options()) {
        if (!option->get_positional() && is_named(*option, a_word)) {
            return option;
        }
    }
    return nullptr;
}

// Whether a value is a folder or a file, from the names the option is known by and the kind of
// value its help shows ("DIR", "FILE", or a check's "PATH(existing)"); nothing when neither.
const char* path_kind(const CLI::Option& a_option) {
    std::string names = a_option.get_name(false, true) + " " + a_option.get_type_name();
    std::transform(names.begin(), names.end(), names.begin(),
                   [](unsigned char a_char) { return static_cast<char>(std::tolower(a_char)); });
    if (names.find("folder") != std::string::npos || names.find("dir") != std::string::npos) {
        return complete_folders;
    }
    if (names.find("file") != std::string::npos || names.find("path") != std::string::npos) {
        return complete_files;
    }
    return nullptr;
}

std::vector<const CLI::App*> visible_subcommands(const CLI::App& a_command) {
    return a_command.get_subcommands(
        [](const CLI::App* a_sub) { return !a_sub->get_group().empty(); });
}

// The positional that the next bare word fills, after a_filled of them; a list takes the rest.
const CLI::Option* positional_at(const CLI::App& a_command, std::size_t a_filled) {
    const CLI::Option* last = nullptr;
    for (const auto* option : a_command.get_options()) {
        if (!option->get_positional()) {
            continue;
        }
        last = option;
        const int size = option->get_items_expected_max();
        if (size >= CLI::detail::expected_max_vector_size) {
            return option;
        }
        if (a_filled < static_cast<std::size_t>(size)) {
            return option;
        }
        a_filled -= static_cast<std::size_t>(size);
    }
    return a_filled == 0 ? last : nullptr;
}

// The choices of a positional checked against a set, which CLI11 shows as "NAME:{a,b,c}".
std::vector<std::string> choices_of(const CLI::Option& a_option) {
    const std::string type = a_option.get_type_name();
    const auto open = type.find('{');
    const auto close = type.find('}', open);
    std::vector<std::string> choices;
    if (open == std::string::npos || close == std::string::npos) {
        return choices;
    }
    std::string choice;
    for (const char c : type.substr(open + 1, close - open - 1)) {
        if (c == ',') {
            choices.push_back(choice);
            choice.clear();
        } else if (c != ' ') {
            choice += c;
        }
    }
    choices.push_back(choice);
    return choices;
}

std::string expand_home(const std::string& a_path) {
    const char* home = std::getenv("HOME");
    if (home != nullptr && (a_path == "~" || a_path.starts_with("~/"))) {
        return home + a_path.substr(1);
    }
    return a_path;
}

std::vector<std::string> plugin_names(const std::string& a_folder_option) {
    std::vector<std::string> names;
    const auto folder = chosen_plugin_folder(expand_home(a_folder_option));
    for (const auto& entry : debugger::find_plugin_module(folder, debugger::plugin_extensions())) {
        names.push_back(string_encode::to_utf8_marked(entry.second));
    }
    return names;
}

std::vector<std::string> values_of(const CLI::Option& a_option,
                                   const std::string& a_folder_option) {
    if (a_option.get_name() == "PLUGIN") {
        return plugin_names(a_folder_option);
    }
    if (a_option.get_name() == "ASSIGNMENT") {
        std::vector<std::string> keys;
        std::string keys_text = settings_key_help() + ", ";
        for (std::size_t start = 0, comma;
             (comma = keys_text.find(", ", start)) != std::string::npos; start = comma + 2) {
            keys.push_back(keys_text.substr(start, comma - start) + "=");
        }
        return keys;
    }
    return choices_of(a_option);
}

void add_command_lines(const CLI::App& a_command, const std::string& a_path,
                       std::vector<std::string>& a_lines) {
    std::string line = a_path + '\t';
    for (const auto* option : a_command.get_options()) {
        for (const auto& name : option->get_snames()) {
            line += "-" + name + " ";
        }
        for (const auto& name : option->get_lnames()) {
            line += "--" + name + " ";
        }
    }
    if (line.ends_with(' ')) {
        line.pop_back();
    }
    a_lines.push_back(line);
    for (const auto* sub : visible_subcommands(a_command)) {
        add_command_lines(*sub, a_path.empty() ? sub->get_name() : a_path + " " + sub->get_name(),
                          a_lines);
    }
}

} // namespace

std::vector<std::string> command_lines(const CLI::App& a_app) {
    std::vector<std::string> lines;
    add_command_lines(a_app, "", lines);
    return lines;
}

std::vector<std::string> completions(const CLI::App& a_app,
                                     const std::vector<std::string>& a_words) {
    const std::string current = a_words.empty() ? std::string() : a_words.back();
    const CLI::App* command = &a_app;
    std::string folder_option;
    std::size_t filled = 0;
    for (std::size_t i = 0; i + 1 < a_words.size(); ++i) {
        const std::string& word = a_words[i];
        if (word.starts_with("-") && word.size() > 1) {
            const auto equals = word.find('=');
            const auto* option = find_option(*command, word.substr(0, equals));
            if (option == nullptr || !takes_value(*option)) {
                continue;
            }
            std::string value;
            if (equals != std::string::npos) {
                value = word.substr(equals + 1);
            } else if (i + 2 < a_words.size()) {
                value = a_words[++i];
            } else {
                // The word being completed is this option's value.
                const char* kind = path_kind(*option);
                return kind == nullptr ? std::vector<std::string>{}
                                       : std::vector<std::string>{kind};
            }
            if (is_named(*option, "--plugin-folder")) {
                folder_option = value;
            }
            continue;
        }
        const auto subcommands = visible_subcommands(*command);
        const auto sub =
            std::find_if(subcommands.begin(), subcommands.end(),
                         [&word](const CLI::App* a_sub) { return a_sub->get_name() == word; });
        if (filled == 0 && sub != subcommands.end()) {
            command = *sub;
            continue;
        }
        ++filled;
    }

    std::vector<std::string> lines;
    const auto offer = [&lines, &current](const std::string& a_candidate) {
        if (a_candidate.starts_with(current) && a_candidate.find('\n') == std::string::npos) {
            lines.push_back(a_candidate);
        }
    };
    if (current.starts_with("-")) {
        for (const auto* option : command->get_options()) {
            for (const auto& name : option->get_lnames()) {
                offer("--" + name);
            }
        }
        return lines;
    }
    if (filled == 0) {
        for (const auto* sub : visible_subcommands(*command)) {
            offer(sub->get_name());
        }
    }
    if (const auto* positional = positional_at(*command, filled)) {
        if (positional->get_name() == "PLUGIN" && current.find('/') != std::string::npos) {
            return {complete_files};
        }
        if (const char* kind = path_kind(*positional);
            kind != nullptr && positional->get_name() != "PLUGIN") {
            return {kind};
        }
        for (const auto& value : values_of(*positional, folder_option)) {
            offer(value);
        }
    }
    return lines;
}

void add_completion_command(CLI::App& a_app) {
    auto words = std::make_shared<std::vector<std::string>>();
    auto* command = a_app.add_subcommand("__complete", "completions for the shell")->group("");
    command->add_option("WORD", *words, "the words after the program's name");
    command->callback([&a_app, words] {
        for (const auto& line :
             words->empty() ? command_lines(a_app) : completions(a_app, *words)) {
            std::cout << line << '\n';
        }
        std::cout.flush();
        throw CLI::Success();
    });
}

} // namespace qiro_plugin::cli

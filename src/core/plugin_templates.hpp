#pragma once
// New plug-ins from a template: a script with the three entries and its companion document.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace qiro_plugin::debugger {

enum class template_language { perl, python, ruby };

// "perl", "python", "ruby" (or their extensions "pl", "py", "rb"), ASCII case ignored.
std::optional<template_language> template_language_from_name(std::string_view a_name);
// "pl", "py" or "rb".
std::string_view template_extension(template_language a_language);

// The script: processing, callback and preference entries, with comments on every request
// key and candidate key; the processing entry offers the written form as its one candidate.
std::string plugin_template_text(template_language a_language, std::string_view a_name);
// The companion document naming the plug-in and enabling its callback and preference entries.
std::string preference_template_text(std::string_view a_name);

struct created_plugin {
    std::filesystem::path plugin_file;
    std::filesystem::path preference_file;
};

// Writes NAME.EXT and NAME.xml into the folder. The name is a file name without a folder
// (the language's extension may be given); an existing file is never replaced. Throws
// std::runtime_error with a message for the author, leaving no file behind.
created_plugin create_plugin_from_template(const std::filesystem::path& a_folder,
                                           template_language a_language, std::string a_name);

} // namespace qiro_plugin::debugger

#include "core/plugin_templates.hpp"
#include "text/url_xml_escape.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace qiro_plugin::debugger {

namespace {

constexpr std::string_view python_template = R"(# coding: utf-8
"""@NAME@: a QIRO Lumen candidate plug-in.

The plug-in manager loads this file and calls the three functions below with a
dictionary of text. Anything printed to standard output lands in the result
document and breaks it: print to sys.stderr while debugging.
"""

import sys


def qiro_plugin_run_process(request):
    """Candidates for the text being converted.

    request["composition_string"]  the written form being converted (hyoki)
    request["reading_string"]      its reading, when the input method knows it
    request["proxy_name"], request["proxy_port"], request["proxy_username"],
    request["proxy_password"]      the manager's proxy, empty (port 0) when off
    """
    hyoki = request.get("composition_string", "")
    if not hyoki:
        return {"candidate": []}
    candidate = {
        "hyoki": hyoki,                   # the text offered (required, 100 characters at most)
        "comment": "@NAME@ の候補\\n二行目",  # plain text; a backslash and n start a new line
        # "comment_xhtml": "<p>...</p>",  # or a whole XHTML comment instead of "comment"
        "alternative_type": "definite_string",  # or "url_jump_string" for an address
        "alternative": hyoki,             # inserted instead (or the address to open)
        "alternative_alias": "そのまま",  # the label the candidate window shows for it
        "info": "@NAME@",                 # a short word on the kind of candidate
    }
    return {"candidate": [candidate]}


def qiro_plugin_run_callback(request):
    """Called after the user committed one of this plug-in's candidates.

    request["candidate_string"]    the committed candidate
    request["composition_string"]  the written form it was found for
    plus the proxy keys as for qiro_plugin_run_process. The output is not read.
    """
    print("committed: %s" % request.get("candidate_string", ""), file=sys.stderr)


def qiro_plugin_run_preference(request):
    """Called when the user opens this plug-in's settings.

    request["path"]  the folder where the plug-in may keep its settings
    """
    print("settings folder: %s" % request.get("path", ""), file=sys.stderr)
)";

constexpr std::string_view ruby_template = R"(# coding: utf-8
#
# @NAME@: a QIRO Lumen candidate plug-in.
#
# The plug-in manager loads this file and calls the three methods below with a
# hash of text. Anything printed to standard output lands in the result
# document and breaks it: use $stderr.puts while debugging.

module Qiro_plugin
  # Candidates for the text being converted.
  #   request['composition_string']  the written form being converted (hyoki)
  #   request['reading_string']      its reading, when the input method knows it
  #   request['proxy_name'], request['proxy_port'], request['proxy_username'],
  #   request['proxy_password']      the manager's proxy, empty (port 0) when off
  def run_process(request)
    hyoki = request['composition_string'].to_s
    return { 'candidate' => [] } if hyoki.empty?

    candidate = {
      'hyoki' => hyoki,                      # the text offered (required, 100 characters at most)
      'comment' => '@NAME@ の候補\n二行目',  # plain text; a backslash and n start a new line
      # 'comment_xhtml' => '<p>...</p>',     # or a whole XHTML comment instead of 'comment'
      'alternative_type' => 'definite_string', # or 'url_jump_string' for an address
      'alternative' => hyoki,                # inserted instead (or the address to open)
      'alternative_alias' => 'そのまま',     # the label the candidate window shows for it
      'info' => '@NAME@'                     # a short word on the kind of candidate
    }
    { 'candidate' => [candidate] }
  end

  # Called after the user committed one of this plug-in's candidates.
  #   request['candidate_string']    the committed candidate
  #   request['composition_string']  the written form it was found for
  # plus the proxy keys as for run_process. The output is not read.
  def run_callback(request)
    $stderr.puts "committed: #{request['candidate_string']}"
  end

  # Called when the user opens this plug-in's settings.
  #   request['path']  the folder where the plug-in may keep its settings
  def run_preference(request)
    $stderr.puts "settings folder: #{request['path']}"
  end
end
)";

constexpr std::string_view perl_template = R"(# @NAME@: a QIRO Lumen candidate plug-in.
#
# The plug-in manager loads this file and calls the three subs below with a
# hash reference of text. Anything printed to standard output lands in the
# result document and breaks it: print to STDERR while debugging.

package Qiro_plugin;

use strict;
use warnings;
use utf8;
use Encode ();

# Candidates for the text being converted. The request is the last argument.
#   $request->{composition_string}  the written form being converted (hyoki)
#   $request->{reading_string}      its reading, when the input method knows it
#   $request->{proxy_name}, {proxy_port}, {proxy_username}, {proxy_password}
#                                   the manager's proxy, empty (port 0) when off
sub run_process {
    my $request = $_[-1];
    my $hyoki = defined $request->{composition_string} ? $request->{composition_string} : '';
    my @candidates;
    if ($hyoki ne '') {
        push @candidates, {
            hyoki             => $hyoki,                  # the text offered (required)
            comment           => '@NAME@ の候補\n二行目', # plain text; backslash n: new line
            # comment_xhtml   => '<p>...</p>',            # or a whole XHTML comment instead
            alternative_type  => 'definite_string',       # or 'url_jump_string' for an address
            alternative       => $hyoki,                  # inserted instead (or the address)
            alternative_alias => 'そのまま',              # the label shown for it
            info              => '@NAME@',                # a short word on the kind
        };
    }
    my %result = (candidate => \@candidates);
    return wantarray ? %result : \%result;
}

# Called after the user committed one of this plug-in's candidates.
#   $request->{candidate_string}    the committed candidate
#   $request->{composition_string}  the written form it was found for
# plus the proxy keys as for run_process. The output is not read.
sub run_callback {
    my $request = $_[-1];
    # The request's texts are characters; print their UTF-8 bytes.
    print STDERR Encode::encode('UTF-8', 'committed: ' . ($request->{candidate_string} // '') . "\n");
}

# Called when the user opens this plug-in's settings.
#   $request->{path}  the folder where the plug-in may keep its settings
sub run_preference {
    my $request = $_[-1];
    print STDERR Encode::encode('UTF-8', 'settings folder: ' . ($request->{path} // '') . "\n");
}

1;
)";

std::string replace_name(std::string_view a_template, std::string_view a_name) {
    std::string text;
    constexpr std::string_view marker = "@NAME@";
    std::size_t from = 0;
    for (std::size_t at = a_template.find(marker); at != std::string_view::npos;
         at = a_template.find(marker, from)) {
        text.append(a_template.substr(from, at - from));
        text.append(a_name);
        from = at + marker.size();
    }
    text.append(a_template.substr(from));
    return text;
}

// The name goes into comments and string literals of three languages, so only characters
// that can end neither are let through, besides being a plain file name.
void check_name(const std::string& a_name) {
    if (a_name.empty() || a_name.front() == '.' || a_name.size() > 200) {
        throw std::runtime_error("the name must be 1 to 200 bytes and must not start with a dot");
    }
    for (const unsigned char character : a_name) {
        if (character < 0x20 || character == 0x7F ||
            std::strchr("/\\'\"`$@%{}<>&;|*?", character)) {
            throw std::runtime_error("the name may not hold control characters nor any of "
                                     "/ \\ ' \" ` $ @ % { } < > & ; | * ?");
        }
    }
}

void write_new_file(const std::filesystem::path& a_path, const std::string& a_text) {
    const int file =
        ::open(a_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (file < 0) {
        const int error = errno;
        throw std::runtime_error(
            a_path.string() + ": " +
            (error == EEXIST ? "a file of that name already exists" : std::strerror(error)));
    }
    std::size_t written = 0;
    while (written < a_text.size()) {
        const ssize_t count = ::write(file, a_text.data() + written, a_text.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            const int error = errno;
            ::close(file);
            ::unlink(a_path.c_str());
            throw std::runtime_error(a_path.string() + ": " + std::strerror(error));
        }
        written += static_cast<std::size_t>(count);
    }
    if (::close(file) != 0) {
        const int error = errno;
        ::unlink(a_path.c_str());
        throw std::runtime_error(a_path.string() + ": " + std::strerror(error));
    }
}

} // namespace

std::optional<template_language> template_language_from_name(std::string_view a_name) {
    std::string lower(a_name);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char a_character) {
        return static_cast<char>(a_character >= 'A' && a_character <= 'Z' ? a_character + 32
                                                                          : a_character);
    });
    if (lower == "perl" || lower == "pl") {
        return template_language::perl;
    }
    if (lower == "python" || lower == "py") {
        return template_language::python;
    }
    if (lower == "ruby" || lower == "rb") {
        return template_language::ruby;
    }
    return std::nullopt;
}

std::string_view template_extension(template_language a_language) {
    switch (a_language) {
    case template_language::perl:
        return "pl";
    case template_language::python:
        return "py";
    case template_language::ruby:
        return "rb";
    }
    return "py";
}

std::string plugin_template_text(template_language a_language, std::string_view a_name) {
    switch (a_language) {
    case template_language::perl:
        return replace_name(perl_template, a_name);
    case template_language::ruby:
        return replace_name(ruby_template, a_name);
    case template_language::python:
        break;
    }
    return replace_name(python_template, a_name);
}

std::string preference_template_text(std::string_view a_name) {
    const std::string name = utility::escape_xml(a_name);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<plugin_preference>\n"
           "\t<name>" +
           name + "</name>\n\t<name_short>" + name + "</name_short>\n\t<description>" + name +
           "</description>\n"
           "\t<copyright></copyright>\n"
           "\t<major_version>1</major_version>\n"
           "\t<minor_version>0</minor_version>\n"
           "\t<preference>true</preference>\n"
           "\t<callback>true</callback>\n"
           "</plugin_preference>\n";
}

created_plugin create_plugin_from_template(const std::filesystem::path& a_folder,
                                           template_language a_language, std::string a_name) {
    const std::string extension = std::string(".").append(template_extension(a_language));
    if (a_name.size() > extension.size() &&
        a_name.compare(a_name.size() - extension.size(), extension.size(), extension) == 0) {
        a_name.resize(a_name.size() - extension.size());
    }
    check_name(a_name);
    created_plugin created{a_folder / (a_name + extension), a_folder / (a_name + ".xml")};
    std::error_code ignored;
    if (std::filesystem::exists(created.preference_file, ignored) ||
        std::filesystem::is_symlink(created.preference_file, ignored)) {
        throw std::runtime_error(created.preference_file.string() +
                                 ": a file of that name already exists");
    }
    write_new_file(created.plugin_file, plugin_template_text(a_language, a_name));
    try {
        write_new_file(created.preference_file, preference_template_text(a_name));
    } catch (...) {
        std::filesystem::remove(created.plugin_file, ignored);
        throw;
    }
    return created;
}

} // namespace qiro_plugin::debugger

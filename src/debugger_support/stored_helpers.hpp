#pragma once
// The URL-encoded debug helpers that the build generates from debug_perl.pl, debug_ruby.rb and
// debug_python.py.

#include <cstddef>

namespace qiro_plugin::bridge::stored {

extern const char debug_helper_perl[];
extern const std::size_t debug_helper_perl_size;
extern const char debug_helper_ruby[];
extern const std::size_t debug_helper_ruby_size;
extern const char debug_helper_python[];
extern const std::size_t debug_helper_python_size;

} // namespace qiro_plugin::bridge::stored

#pragma once
// The URL-encoded probe scripts that the build generates from probe.pl, probe.rb, probe.py.

#include <cstddef>

namespace qiro_plugin::bridge::stored {

extern const char probe_perl[];
extern const std::size_t probe_perl_size;
extern const char probe_ruby[];
extern const std::size_t probe_ruby_size;
extern const char probe_python[];
extern const std::size_t probe_python_size;

} // namespace qiro_plugin::bridge::stored

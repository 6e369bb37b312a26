#pragma once
// The URL-encoded bridge scripts that the build generates from bridge.pl, bridge.rb, bridge.py.

#include <cstddef>

namespace qiro_plugin::bridge::stored {

extern const char perl[];
extern const std::size_t perl_size;
extern const char ruby[];
extern const std::size_t ruby_size;
extern const char python[];
extern const std::size_t python_size;

} // namespace qiro_plugin::bridge::stored

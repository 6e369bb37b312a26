#pragma once
// The URL-encoded coverage helper scripts that the build generates from coverage_start.py,
// coverage_start.rb, coverage_start.pm and coverage_collect.pl.

#include <cstddef>

namespace qiro_plugin::bridge::stored {

extern const char coverage_start_python[];
extern const std::size_t coverage_start_python_size;
extern const char coverage_start_ruby[];
extern const std::size_t coverage_start_ruby_size;
extern const char coverage_start_perl[];
extern const std::size_t coverage_start_perl_size;
extern const char coverage_collect_perl[];
extern const std::size_t coverage_collect_perl_size;

} // namespace qiro_plugin::bridge::stored

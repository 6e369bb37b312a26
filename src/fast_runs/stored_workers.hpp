#pragma once
// The URL-encoded fork workers that the build generates from worker.pl, worker.rb, worker.py.

#include <cstddef>

namespace qiro_plugin::bridge::stored {

extern const char worker_perl[];
extern const std::size_t worker_perl_size;
extern const char worker_ruby[];
extern const std::size_t worker_ruby_size;
extern const char worker_python[];
extern const std::size_t worker_python_size;

} // namespace qiro_plugin::bridge::stored

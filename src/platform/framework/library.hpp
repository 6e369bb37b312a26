#pragma once
// Shared libraries loaded by path, which stay loaded for the life of the process.

#include "text/utf16_string.hpp"

namespace qiro_plugin::utility {

// A loaded library; null means none.
using library_handle = void*;
// The address of an exported function, to be cast to its real type by the caller.
using library_function = void (*)();

// Loads the shared library at a_path (a relative path counts from the working folder, it is
// never searched for). Returns null when a_path is empty or names nothing loadable.
library_handle load_library(const utf16_string& a_path);

// The exported function a_name of a_instance_handle, or null when there is none. A null
// library is a failed assertion.
library_function get_function_address(library_handle a_instance_handle, const char* a_name);

// Gives back one load of a_instance_handle, but never its last one, so code taken from a
// library stays valid for the life of the process. A null library is a failed assertion.
// Returns 1.
int free_library(library_handle a_instance_handle);

} // namespace qiro_plugin::utility

#pragma once
// A broken promise of the code under test, reported to libFuzzer as a crash.

#include <cstdlib>

inline void require(bool a_condition) {
    if (!a_condition) {
        std::abort();
    }
}

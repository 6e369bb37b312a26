#include "core/script_languages.hpp"

#include "bridges/bridge_scripts.hpp"

#include <array>

namespace qiro_plugin::debugger {

std::span<const script_language> script_language_table() {
    static const std::array<script_language, 3> table{{
        {"perl", ".pl", u"Perl", &bridge::perl_script},
        {"ruby", ".rb", u"Ruby", &bridge::ruby_script},
        {"python", ".py", u"Python", &bridge::python_script},
    }};
    return table;
}

} // namespace qiro_plugin::debugger

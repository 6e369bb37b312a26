#include "bridges/bridge_scripts.hpp"

#include "bridges/stored_scripts.hpp"

namespace qiro_plugin::bridge {

const std::string& perl_script() {
    static const std::string script(stored::perl, stored::perl_size);
    return script;
}

const std::string& ruby_script() {
    static const std::string script(stored::ruby, stored::ruby_size);
    return script;
}

const std::string& python_script() {
    static const std::string script(stored::python, stored::python_size);
    return script;
}

} // namespace qiro_plugin::bridge

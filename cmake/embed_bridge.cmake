# Turns a bridge script into a C++ source that holds it URL-encoded, the form
# in which the runtime carries it: every byte becomes "%XX" (upper-case hex)
# except ".", "_" and "-", which stay, and the blank, which becomes "+".
#
# As a module: qiro_embed_bridge(<target> <name> <script> [<header>]) adds a build step that
# regenerates <name>.cpp, defining stored::<name> and stored::<name>_size, whenever
# the script changes; <header> (bridges/stored_scripts.hpp unless given) declares them.
# As a script: cmake -DINPUT=<script> -DOUTPUT=<cpp> -DNAME=<name> [-DHEADER=<header>]
#              -P embed_bridge.cmake

if(CMAKE_SCRIPT_MODE_FILE)
    if(NOT HEADER)
        set(HEADER "bridges/stored_scripts.hpp")
    endif()
    file(READ "${INPUT}" hex HEX)
    string(TOUPPER "${hex}" hex)
    # Every byte is two hex digits, so each match starts on a byte boundary.
    string(REGEX REPLACE "([0-9A-F][0-9A-F])" "%\\1" encoded "${hex}")
    string(REPLACE "%2E" "." encoded "${encoded}")
    string(REPLACE "%5F" "_" encoded "${encoded}")
    string(REPLACE "%2D" "-" encoded "${encoded}")
    string(REPLACE "%20" "+" encoded "${encoded}")
    # Split into string literals of 96 characters; the text holds no quote or backslash.
    string(REGEX REPLACE "(................................................................................................)"
                         "\\1\"\n    \"" encoded "${encoded}")
    get_filename_component(script_name "${INPUT}" NAME)
    file(WRITE "${OUTPUT}.tmp"
        "// Generated from ${script_name} by cmake/embed_bridge.cmake; do not edit.\n"
        "#include \"${HEADER}\"\n\n"
        "namespace qiro_plugin::bridge::stored {\n\n"
        "const char ${NAME}[] =\n"
        "    \"${encoded}\";\n"
        "const std::size_t ${NAME}_size = sizeof(${NAME}) - 1;\n\n"
        "} // namespace qiro_plugin::bridge::stored\n")
    file(RENAME "${OUTPUT}.tmp" "${OUTPUT}")
    return()
endif()

set(QIRO_EMBED_BRIDGE_SCRIPT ${CMAKE_CURRENT_LIST_FILE})

function(qiro_embed_bridge a_target a_name a_script)
    set(header "bridges/stored_scripts.hpp")
    if(ARGC GREATER 3)
        set(header ${ARGV3})
    endif()
    set(output ${CMAKE_CURRENT_BINARY_DIR}/${a_name}.cpp)
    add_custom_command(
        OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -DINPUT=${a_script} -DOUTPUT=${output} -DNAME=${a_name}
                -DHEADER=${header} -P ${QIRO_EMBED_BRIDGE_SCRIPT}
        DEPENDS ${a_script} ${QIRO_EMBED_BRIDGE_SCRIPT}
        COMMENT "Embedding ${a_script}"
        VERBATIM)
    # The text is one long literal, beyond the length the standard promises to support
    # (every compiler in use accepts it).
    set_source_files_properties(${output} PROPERTIES COMPILE_OPTIONS -Wno-overlength-strings)
    target_sources(${a_target} PRIVATE ${output})
endfunction()

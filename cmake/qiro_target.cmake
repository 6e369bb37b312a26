# Helpers shared by every folder: one static library per source folder,
# one GoogleTest executable per test folder, with the project's warnings.

function(qiro_warnings a_target)
    target_compile_options(${a_target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
                                               -Wnon-virtual-dtor -Wold-style-cast)
    if(QIRO_WERROR)
        target_compile_options(${a_target} PRIVATE -Werror)
    endif()
endfunction()

# qiro_library(NAME folder-name LINK libs...): a static library of every .cpp in
# the calling folder (not recursive), with src/ as the include root.
function(qiro_library a_name)
    cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    if(NOT sources)
        # A folder with headers only so far still gives its users the include root.
        add_library(${a_name} INTERFACE)
        target_include_directories(${a_name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
        target_link_libraries(${a_name} INTERFACE ${ARG_LINK})
        return()
    endif()
    add_library(${a_name} STATIC ${sources})
    target_include_directories(${a_name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${a_name} PUBLIC ${ARG_LINK})
    qiro_warnings(${a_name})
endfunction()

# qiro_test(NAME LABELS l... LINK libs... [ENV k=v...] [SLOW filter]): a GoogleTest program
# of every .cpp in the calling folder, its cases registered with CTest. Cases matching the
# GoogleTest filter SLOW get the label "slow" instead of LABELS.
function(qiro_test a_name)
    cmake_parse_arguments(ARG "" "TIMEOUT;SLOW" "LABELS;LINK;ENV" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    if(NOT sources)
        return() # a test folder whose first test is still being written
    endif()
    add_executable(${a_name} ${sources})
    target_link_libraries(${a_name} PRIVATE ${ARG_LINK} GTest::gtest GTest::gmock GTest::gtest_main)
    target_include_directories(${a_name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_definitions(${a_name} PRIVATE
        QIRO_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data"
        QIRO_BINARY_DIR="${PROJECT_BINARY_DIR}")
    qiro_warnings(${a_name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    if(ARG_SLOW)
        gtest_discover_tests(${a_name} TEST_FILTER "-${ARG_SLOW}" TEST_LIST ${a_name}_TESTS
            PROPERTIES TIMEOUT ${ARG_TIMEOUT} DISCOVERY_TIMEOUT 60)
        gtest_discover_tests(${a_name} TEST_FILTER "${ARG_SLOW}" TEST_LIST ${a_name}_SLOW_TESTS
            PROPERTIES TIMEOUT ${ARG_TIMEOUT} DISCOVERY_TIMEOUT 60)
        qiro_test_properties(${a_name}_SLOW_TESTS "slow" "${ARG_ENV}")
    else()
        gtest_discover_tests(${a_name} TEST_LIST ${a_name}_TESTS
            PROPERTIES TIMEOUT ${ARG_TIMEOUT} DISCOVERY_TIMEOUT 60)
    endif()
    qiro_test_properties(${a_name}_TESTS "${ARG_LABELS}" "${ARG_ENV}")
endfunction()

# Discovery passes its PROPERTIES on as one flat list, so a second label or environment
# entry would be read as a property name; list-valued properties are set once the
# discovered tests are known instead.
function(qiro_test_properties a_list a_labels a_environment)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${a_list}_properties.cmake)
    file(WRITE ${script}
         "if(${a_list})\n"
         "    set_tests_properties(\${${a_list}} PROPERTIES LABELS \"${a_labels}\")\n")
    if(a_environment)
        file(APPEND ${script}
             "    set_tests_properties(\${${a_list}} PROPERTIES ENVIRONMENT \"${a_environment}\")\n")
    endif()
    file(APPEND ${script} "endif()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${script})
endfunction()

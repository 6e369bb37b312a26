# The target qiro_version: a generated header with the project's version and the commit.

set(qiro_version_header ${PROJECT_BINARY_DIR}/generated/build_version.hpp)
add_custom_target(qiro_version_header
                  COMMAND ${CMAKE_COMMAND} -DSOURCE_DIR=${PROJECT_SOURCE_DIR}
                          -DOUTPUT=${qiro_version_header} -DQIRO_VERSION=${PROJECT_VERSION}
                          -P ${CMAKE_CURRENT_LIST_DIR}/write_build_version.cmake
                  BYPRODUCTS ${qiro_version_header}
                  VERBATIM)
add_library(qiro_version INTERFACE)
target_include_directories(qiro_version INTERFACE ${PROJECT_BINARY_DIR}/generated)
add_dependencies(qiro_version qiro_version_header)

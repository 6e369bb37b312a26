# Writes the version header: run at every build, so that the commit follows the checkout, and
# configure_file leaves the header untouched (nothing recompiles) while it stays the same.
# Arguments: -DSOURCE_DIR=... -DOUTPUT=... -DQIRO_VERSION=...
set(QIRO_COMMIT "")
find_program(GIT_EXECUTABLE git)
if(GIT_EXECUTABLE)
    # A build must never hold the index lock that a commit made meanwhile needs.
    set(ENV{GIT_OPTIONAL_LOCKS} 0)
    execute_process(COMMAND ${GIT_EXECUTABLE} -C ${SOURCE_DIR} describe --always --dirty --abbrev=12
                    OUTPUT_VARIABLE described OUTPUT_STRIP_TRAILING_WHITESPACE
                    RESULT_VARIABLE status ERROR_QUIET)
    # Only a checkout of these sources counts, not a git folder somewhere above an unpacked archive.
    execute_process(COMMAND ${GIT_EXECUTABLE} -C ${SOURCE_DIR} rev-parse --show-toplevel
                    OUTPUT_VARIABLE top OUTPUT_STRIP_TRAILING_WHITESPACE
                    RESULT_VARIABLE top_status ERROR_QUIET)
    if(status EQUAL 0 AND top_status EQUAL 0)
        file(REAL_PATH "${top}" top)
        file(REAL_PATH "${SOURCE_DIR}" source)
        if(top STREQUAL source)
            set(QIRO_COMMIT "${described}")
        endif()
    endif()
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/build_version.hpp.in ${OUTPUT} @ONLY)

# qiro_libxml2_static: libxml2 with ICU, zlib and liblzma from their static archives, for a
# program that wants them linked in rather than loaded; empty when an archive is missing.
#
# A target opts in with the target property QIRO_STATIC_LIBXML2; qiro_xml then hands it this
# target instead of the shared library.

set(qiro_libxml2_archives)
foreach(archive libxml2.a libicuuc.a libicudata.a liblzma.a libz.a)
    string(MAKE_C_IDENTIFIER "QIRO_ARCHIVE_${archive}" variable)
    find_library(${variable} NAMES ${archive})
    if(NOT ${variable})
        message(STATUS "No ${archive}: qiro-lumen loads libxml2 as a shared library")
        set(qiro_libxml2_archives)
        break()
    endif()
    list(APPEND qiro_libxml2_archives ${${variable}})
endforeach()

if(qiro_libxml2_archives)
    add_library(qiro_libxml2_static INTERFACE IMPORTED GLOBAL)
    target_include_directories(qiro_libxml2_static INTERFACE ${LIBXML2_INCLUDE_DIRS})
    target_link_libraries(qiro_libxml2_static INTERFACE ${qiro_libxml2_archives} Threads::Threads
                                                        ${CMAKE_DL_LIBS} m)
endif()

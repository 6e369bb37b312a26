# What the installed tool brings beside the programs (links in bin/, man pages, shell
# completions, desktop metadata, the Debian documentation files), and the Debian package.

set(qiro_packaging ${PROJECT_SOURCE_DIR}/packaging)
set(qiro_staged ${PROJECT_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${qiro_staged}/bin)

set(qiro_programs qiro-lumen)
if(QIRO_BUILD_GUI)
    list(APPEND qiro_programs qiro-lumen-debugger)
endif()

# Relative links, so that the installed tree works wherever it is unpacked; the programs follow
# /proc/self/exe to their real folder and find plugin/ there.
foreach(program ${qiro_programs})
    file(CREATE_LINK ../${QIRO_PROGRAM_DIR}/${program} ${qiro_staged}/bin/${program} SYMBOLIC)
    install(FILES ${qiro_staged}/bin/${program} DESTINATION bin)
endforeach()

# Compressed as Debian wants them: gzip -9 without a time stamp, so builds are reproducible.
set(qiro_compressed)
function(qiro_gzip a_source a_output)
    add_custom_command(OUTPUT ${a_output}
                       COMMAND gzip -9nc ${a_source} > ${a_output}
                       DEPENDS ${a_source} VERBATIM)
    set(qiro_compressed ${qiro_compressed} ${a_output} PARENT_SCOPE)
endfunction()

foreach(program ${qiro_programs})
    # The page's footer names the version.
    configure_file(${qiro_packaging}/man/${program}.1 ${qiro_staged}/${program}.1 @ONLY)
    qiro_gzip(${qiro_staged}/${program}.1 ${qiro_staged}/${program}.1.gz)
    install(FILES ${qiro_staged}/${program}.1.gz DESTINATION share/man/man1)
endforeach()
qiro_gzip(${qiro_packaging}/debian/changelog ${qiro_staged}/changelog.gz)
add_custom_target(qiro_packaging_files ALL DEPENDS ${qiro_compressed})

set(qiro_doc_dir share/doc/qiro-lumen-debugger)
install(FILES ${qiro_staged}/changelog.gz ${qiro_packaging}/debian/copyright
        ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${qiro_doc_dir})

install(FILES ${qiro_packaging}/completions/qiro-lumen.bash
        DESTINATION share/bash-completion/completions RENAME qiro-lumen)
install(FILES ${qiro_packaging}/completions/_qiro-lumen DESTINATION share/zsh/vendor-completions)

if(QIRO_BUILD_GUI)
    install(FILES ${qiro_packaging}/org.qiro.lumen.debugger.metainfo.xml
            DESTINATION share/metainfo)
endif()

if(QIRO_BUILD_TESTS)
    add_subdirectory(tests/package)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qiro-lumen-debugger)
set(CPACK_PACKAGE_VENDOR "QIRO Lumen")
set(CPACK_PACKAGE_CONTACT "QIRO Lumen developers <lumen@qiro.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "debugger for script plug-ins of the qiro input method")
set(CPACK_PACKAGE_DESCRIPTION_FILE ${qiro_packaging}/debian/description)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The bridges start the interpreters by name; without them a run reports that no interpreter
# accepted the file, so the tool still installs and lists plug-ins. libsecret is loaded when the
# proxy password is first read (shlibdeps cannot see it); without it the password reads as empty.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "perl, ruby, python3, python-is-python3, libsecret-1-0, qt6-translations-l10n")
# The proxy password lives in a Secret Service; without one it reads as empty. debugpy lets
# --debug attach an editor to a Python plug-in; without it such a run is refused. The coverage
# tools serve "test --coverage" only (Ruby's comes with ruby), and lcov its HTML report.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS
    "gnome-keyring, python3-debugpy, python3-coverage, libdevel-cover-perl, lcov")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)

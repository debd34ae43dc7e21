# The Debian package (`cpack -G DEB`, run by scripts/package): everything the install rules put
# under /usr, its dependencies read from the linked shared libraries, ffmpeg named for encoding.

set(WAXLINE_MAINTAINER "The Waxline developers <packages@waxline.org>"
    CACHE STRING "Maintainer field and changelog signature of the Debian package")

# Debian wants its copyright, a compressed changelog and manual pages; gzip -n keeps the files
# the same from one build to the next.
configure_file(${CMAKE_SOURCE_DIR}/packaging/changelog ${CMAKE_BINARY_DIR}/packaging/changelog @ONLY)
set(waxline_changelog_gz ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
add_custom_command(OUTPUT ${waxline_changelog_gz}
    COMMAND gzip -9nc ${CMAKE_BINARY_DIR}/packaging/changelog > ${waxline_changelog_gz}
    DEPENDS ${CMAKE_BINARY_DIR}/packaging/changelog VERBATIM)
set(waxline_docdir ${CMAKE_INSTALL_DATADIR}/doc/waxline)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/copyright DESTINATION ${waxline_docdir})
install(FILES ${waxline_changelog_gz} DESTINATION ${waxline_docdir})
foreach(page waxline waxline-cli)
    configure_file(${CMAKE_SOURCE_DIR}/packaging/${page}.1 ${CMAKE_BINARY_DIR}/packaging/${page}.1 @ONLY)
    set(gz ${CMAKE_BINARY_DIR}/packaging/${page}.1.gz)
    add_custom_command(OUTPUT ${gz}
        COMMAND gzip -9nc ${CMAKE_BINARY_DIR}/packaging/${page}.1 > ${gz}
        DEPENDS ${CMAKE_BINARY_DIR}/packaging/${page}.1 VERBATIM)
    list(APPEND waxline_package_docs ${gz})
    install(FILES ${gz} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()
add_custom_target(waxline_package_docs ALL DEPENDS ${waxline_changelog_gz} ${waxline_package_docs})

# cpack packs what is built: building everything first (the tests too) is the build's job.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME waxline)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${WAXLINE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Tracks are encoded by an ffmpeg child process; the Fusion style and the offscreen pictures need
# the Qt platform plugins, which no library links.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "ffmpeg, qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "digitise vinyl records and cassettes into tagged MP3 tracks
Waxline records a side from a USB turntable or cassette deck, or from any
other input, equalises it for records or chrome tape, splits it into tracks
where the music goes quiet, and encodes every track to a tagged MP3 in the
music library. It leads through the job one panel at a time; the
command-line tool waxline-cli does the same from a terminal.")
include(CPack)

# The Debian package: `cpack -G DEB` in the build directory.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvex-road-app)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "${ORVEX_MAKER}")
set(CPACK_PACKAGE_CONTACT "${ORVEX_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "operator's application for a roadside traffic radar")
set(CPACK_PACKAGE_DESCRIPTION
    "Connects to the server of an Orvex traffic radar over a WebSocket, shows the tracked \
vehicles in a table, on a traffic scheme of the configured road and over the picture of a \
roadside camera, and sends the radar its position, limitation area, tuning and service \
commands. Also holds a radar server simulator with recording and replay, and a recording \
inspector.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${ORVEX_HOMEPAGE}")
# The libraries come from the binaries. What they do not show: Qt's own catalogue, which
# the program loads from the system, and the X11 platform plugin, which Qt loads at run
# time (Debian ships it in libqt5gui5).
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qttranslations5-l10n, libqt5gui5")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-dejavu-core")

# The program writes exported histories into "history" beside itself, which is not
# writable in /usr; the maintainer scripts point that name at a shared folder in /var/lib.
set(ORVEX_PACKAGE_PRIVATE_DIR ${CPACK_PACKAGING_INSTALL_PREFIX}/${ORVEX_INSTALL_PRIVATE_DIR})
set(ORVEX_PACKAGE_HISTORY_DIR /var/lib/orvex-road-app/history)
foreach(script IN ITEMS postinst prerm postrm)
    configure_file(debian/${script}.in ${CMAKE_CURRENT_BINARY_DIR}/debian/${script} @ONLY
                   FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
                                    GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    list(APPEND CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/debian/${script})
endforeach()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Written into the top of the build directory, packaging the whole installation.
include(CPack)

# The Debian package: `cpack -G DEB` in a build folder makes
# nakos-monitor_<version>-1_<arch>.deb from the install rules (the three
# programs, the desktop entry, icons, manual pages, the recorder's systemd
# unit nakos-recorder@.service with its example station file). The unit
# runs as a dynamic user in the dialout group, so the package needs no
# maintainer scripts. scripts/package.sh
# does it from a Release build.
set(NAKOS_PACKAGE_MAINTAINER "ORLUK Water Monitor team <nakos-monitor@localhost>"
    CACHE STRING "Maintainer field of the Debian package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME nakos-monitor)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${NAKOS_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "ORLUK Water Monitor: desktop program for an oil condition sensor")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT) # <name>_<version>-<release>_<arch>.deb
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "${CPACK_PACKAGE_DESCRIPTION_SUMMARY}
 Polls an in-line sensor that measures water in oil, oil temperature,
 pressure and soot on a serial port every 4 seconds, keeps up to 130000
 readings, draws a chart per quantity, autosaves every minute, and saves,
 opens, merges, exports (CSV) and prints the data.
 .
 nakos-tool converts, summarises and plots data files and records from a
 sensor without a window, also as a systemd service per sensor
 (nakos-recorder@<name>); nakos-sensor-sim is a simulated sensor on a
 pseudo-terminal for demonstrations and service training.")
# The shared libraries come from the binaries (dpkg-shlibdeps). Qt loads
# its platform plugins at run time, out of dpkg-shlibdeps' sight: libqt6gui6
# carries xcb and offscreen and only recommends the rest (qt6-qpa-plugins),
# so that package is named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")

include(CPack)

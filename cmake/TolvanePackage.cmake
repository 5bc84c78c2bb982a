# The Debian package, made by `cpack -G DEB` (scripts/package does it all) in a build
# configured with -DCMAKE_INSTALL_PREFIX=/usr. Library dependencies are computed by dpkg-shlibdeps from the
# installed binary; the rest are what the program and the access helper run:
#   pkexec            asks for the administrator's consent to run the helper
#   udev, kmod        udevadm and modprobe, called by the helper
#   qt6-qpa-plugins   Qt's X11 platform plugin, without which no tray icon shows
#   qt6-wayland       Qt's Wayland platform plugin, so that Tolvane runs natively on Wayland
# and recommended, for GNOME's own natural-scroll setting (absent without them, which counts
# as off): gsettings-desktop-schemas, and libglib2.0-bin for the gsettings tool that reads it.
# The only maintainer script, postrm, removes on purge what the helper wrote to /etc.

# The binary, the desktop entry, the polkit action and the manual page hold absolute paths
# made from the install prefix, so the package unpacks exactly there, and only /usr suits a
# Debian package.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    message(STATUS "No Debian package: configure with -DCMAKE_INSTALL_PREFIX=/usr to make one")
    return()
endif()
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tolvane)
set(CPACK_PACKAGE_VENDOR "Tolvane")
set(CPACK_PACKAGE_CONTACT "Tolvane maintainers <maintainers@users.noreply.c-seed-0fa1396a.example>"
    CACHE STRING "Maintainer of the Debian package")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "tray utility to switch the scroll direction and lock the keyboard")
set(CPACK_PACKAGE_DESCRIPTION
    "Tolvane lives in the tray of a Linux desktop. It reverses the scroll wheel of\n"
    "every mouse when its mode differs from the desktop's setting, and can switch\n"
    "to mouse scrolling by itself when an external mouse is plugged in. It locks\n"
    "the keyboard while you clean it, and its menu shows live gauges of processor,\n"
    "memory and storage use.\n"
    "\n"
    "Tolvane reads the input devices directly. Its helper, run through pkexec,\n"
    "installs a udev rule that gives the user at the local seat access to them.")
string(JOIN "" CPACK_PACKAGE_DESCRIPTION ${CPACK_PACKAGE_DESCRIPTION})

set(CPACK_DEBIAN_PACKAGE_NAME tolvane)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "pkexec, udev, kmod, qt6-qpa-plugins, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gsettings-desktop-schemas, libglib2.0-bin")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/data/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# What Debian expects of every package's files: no symbols, directories 0755.
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

include(CPack)

# The Debian package, made by `cpack -G DEB` (scripts/package does it all) in a build
# configured with -DCMAKE_INSTALL_PREFIX=/usr. Library dependencies are computed by dpkg-shlibdeps from the
# installed binaries; the rest are what the program and the input service need besides:
#   polkitd           decides each call to the service
#   a system bus      the service's only door (polkitd names it the same way)
#   kmod              modprobe, with which postinst loads uinput at once
#   qt6-qpa-plugins   Qt's X11 platform plugin, without which no tray icon shows
#   qt6-wayland       Qt's Wayland platform plugin, so that Tolvane runs natively on Wayland
# and recommended, for GNOME's own natural-scroll setting (absent without them, which counts
# as off): gsettings-desktop-schemas, and libglib2.0-bin for the gsettings tool that reads it;
# and suggested, for GNOME, whose panel has no tray without it: gnome-shell-extension-appindicator.
# Tolvane is published under the GNU GPL, version 3 or later (LICENSE, data/debian/copyright).
# The maintainer scripts enable and start the service where systemd runs, stop it on removal,
# and take away the udev rule that versions before the service wrote (data/debian/).

# The binaries, the desktop entry, the unit, the bus activation file and the manual page hold
# absolute paths made from the install prefix, so the package unpacks exactly there, and only
# /usr suits a Debian package.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    message(STATUS "No Debian package: configure with -DCMAKE_INSTALL_PREFIX=/usr to make one")
    return()
endif()
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tolvane)
set(CPACK_PACKAGE_VENDOR "Tolvane")
set(CPACK_PACKAGE_CONTACT "Tolvane developers <tolvane@users.noreply.example>")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_CURRENT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "tray utility to switch the scroll direction and lock the keyboard")
set(CPACK_PACKAGE_DESCRIPTION
    "Tolvane lives in the tray of a Linux desktop. It reverses the scroll wheel of\n"
    "every mouse when its mode differs from the desktop's setting, and can switch\n"
    "to mouse scrolling by itself when an external mouse is plugged in. It locks\n"
    "the keyboard while you clean it, and its menu shows live gauges of processor,\n"
    "memory and storage use.\n"
    "\n"
    "Raw input belongs to its small input service, a sandboxed system service on\n"
    "D-Bus. It grabs mice to invert their wheel and holds keyboards during\n"
    "cleaning; it never hands input events to any program and never writes events\n"
    "of its own making. polkit lets only the active local session's Tolvane ask.")
string(JOIN "" CPACK_PACKAGE_DESCRIPTION ${CPACK_PACKAGE_DESCRIPTION})

set(CPACK_DEBIAN_PACKAGE_NAME tolvane)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "polkitd, default-dbus-system-bus | dbus-system-bus, kmod, qt6-qpa-plugins, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gsettings-desktop-schemas, libglib2.0-bin")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gnome-shell-extension-appindicator")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/data/debian/postinst
    ${CMAKE_CURRENT_SOURCE_DIR}/data/debian/prerm ${CMAKE_CURRENT_SOURCE_DIR}/data/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# What Debian expects of every package's files: no symbols, directories 0755.
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

include(CPack)

# `cpack` makes build/package/quillox_VERSION_ARCHITECTURE.deb of what Install.cmake installs.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillox)
set(CPACK_PACKAGE_VENDOR Orvendal)
set(CPACK_PACKAGE_CONTACT "Orvendal <${QUILLOX_PACKAGE_CONTACT}>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "seals one website into a locked full screen")
set(CPACK_PACKAGE_DESCRIPTION
"Quillox turns one machine into a public display: one website, or one folder
with a website in it, sealed into a full screen that visitors can use but not
leave. It is made for museums, shops, libraries and schools that leave a
display alone for months, and comes with sessions for the display manager in
which nothing else runs.")
set(CPACK_PACKAGE_HOMEPAGE_URL https://quillox.orvendal.com/)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/package)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION web)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# What is linked is found in the program; the rest it starts or loads when it runs.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
  "bubblewrap, xdg-dbus-proxy, dbus-daemon, fonts-dejavu-core, default-dbus-session-bus | dbus-session-bus")
string(JOIN ", " CPACK_DEBIAN_PACKAGE_RECOMMENDS
  cage xwayland fonts-urw-base35 gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav gstreamer1.0-gl
  "gstreamer1.0-alsa | gstreamer1.0-pulseaudio | gstreamer1.0-pipewire" x11-xkb-utils)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "prometheus-node-exporter, xserver-xorg-core")
include(CPack)

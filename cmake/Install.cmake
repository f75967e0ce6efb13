# What a package installs, beneath the prefix. The program finds its modules and its guide beside itself; the unit and
# the sessions name it by its whole path, so that the prefix is to be chosen when the build is configured.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(QUILLOX_PACKAGE_CONTACT "quillox@orvendal.com" CACHE STRING "Address of the package's maintainer")

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(prepared ${PROJECT_BINARY_DIR}/packaging)
set(QUILLOX_SESSION_PROGRAM ${CMAKE_INSTALL_PREFIX}/bin/quillox)
set(QUILLOX_SESSION ${CMAKE_INSTALL_PREFIX}/lib/quillox/session)
# As the program itself writes it: quoted, and dollar signs left alone.
set(QUILLOX_EXECUTABLE ":\"${CMAKE_INSTALL_PREFIX}/bin/quillox\"")
string(TIMESTAMP QUILLOX_RELEASE_DATE "%Y-%m-%d" UTC)
string(TIMESTAMP QUILLOX_CHANGELOG_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)

configure_file(${packaging}/com.orvendal.quillox.watchdog.service.in
  ${prepared}/com.orvendal.quillox.watchdog.service @ONLY)
configure_file(${packaging}/metainfo/com.orvendal.quillox.metainfo.xml.in
  ${prepared}/com.orvendal.quillox.metainfo.xml @ONLY)
configure_file(${packaging}/sessions/session.in ${prepared}/session @ONLY)
# Different names: display managers look for both kinds by the name alone.
foreach(session quillox-wayland quillox-x11)
  configure_file(${packaging}/sessions/${session}.desktop.in ${prepared}/${session}.desktop @ONLY)
endforeach()
configure_file(${packaging}/debian/changelog.in ${prepared}/changelog @ONLY)
configure_file(${packaging}/man/quillox.1.in ${prepared}/quillox.1 @ONLY)

find_program(GZIP gzip REQUIRED)
foreach(text changelog quillox.1)
  execute_process(COMMAND ${GZIP} -9nkf ${prepared}/${text} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

install(TARGETS quillox RUNTIME DESTINATION bin)
install(TARGETS quillox-engine quillox-updates
  LIBRARY DESTINATION lib/${CMAKE_LIBRARY_ARCHITECTURE}/quillox
  PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
install(TARGETS quillox-web-extension
  LIBRARY DESTINATION lib/${CMAKE_LIBRARY_ARCHITECTURE}/quillox/web-extensions
  PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
install(FILES ${PROJECT_SOURCE_DIR}/resources/setup-guide/index.html DESTINATION share/quillox/setup-guide)
install(DIRECTORY ${packaging}/icons/hicolor DESTINATION share/icons)
install(FILES ${packaging}/com.orvendal.quillox.desktop DESTINATION share/applications)
install(FILES ${prepared}/com.orvendal.quillox.metainfo.xml DESTINATION share/metainfo)
install(FILES ${prepared}/quillox.1.gz DESTINATION share/man/man1)
install(FILES ${prepared}/com.orvendal.quillox.watchdog.service DESTINATION lib/systemd/user)
install(FILES ${prepared}/quillox-wayland.desktop DESTINATION share/wayland-sessions)
install(FILES ${prepared}/quillox-x11.desktop DESTINATION share/xsessions)
install(PROGRAMS ${prepared}/session DESTINATION lib/quillox)
install(FILES ${packaging}/debian/copyright ${prepared}/changelog.gz DESTINATION share/doc/quillox)

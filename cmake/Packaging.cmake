# The Debian package: cpack -G DEB in a release build. Its dependencies are what the programs are linked with.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The Quillet maintainers <maintainers@tesseral.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "import of Evernote exports into notes, pages and files")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Reads Evernote exports (ENEX) and writes one output for each note: a note
package with rich text and attachments, an HTML page for a web clipping, or a
plain file.
.
The import runs as a command, and as a service that the session bus starts on
demand.")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "default-dbus-session-bus | dbus-session-bus, shared-mime-info")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
  WORLD_READ WORLD_EXECUTE)
include(CPack)

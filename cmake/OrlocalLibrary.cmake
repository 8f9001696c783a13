# The store as a library for other programs: one archive of its rooms and what they stand on, their headers, and what
# pkg-config and CMake are to know of it. Static, since its C++ headers promise no binary interface over versions.

set(library_rooms
    orlocal_base
    orlocal_store
    orlocal_store_alarms
    orlocal_store_core
    orlocal_store_edits
    orlocal_store_file
    orlocal_store_icalendar
    orlocal_store_invitations
    orlocal_store_model
    orlocal_store_recurrence
    orlocal_store_rows
    orlocal_store_time)
set(library_archive ${PROJECT_BINARY_DIR}/liborlocalstore.a)
set(library_files)
foreach(room IN LISTS library_rooms)
  list(APPEND library_files $<TARGET_FILE:${room}>)
endforeach()
add_custom_command(
  OUTPUT ${library_archive}
  COMMAND ${CMAKE_COMMAND} -E rm -f ${library_archive}
  COMMAND sh ${CMAKE_CURRENT_LIST_DIR}/join_archives.sh ${CMAKE_AR} ${library_archive} ${library_files}
  DEPENDS ${library_rooms} ${CMAKE_CURRENT_LIST_DIR}/join_archives.sh
  VERBATIM)
add_custom_target(orlocal_library ALL DEPENDS ${library_archive})

# Headers stand in a folder of their own, so that "store/…" and "base/…" are nobody else's.
set(library_headers ${CMAKE_INSTALL_INCLUDEDIR}/orlocal)
install(FILES ${library_archive} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library)
foreach(folder base store)
  install(
    DIRECTORY src/${folder}
    DESTINATION ${library_headers}
    COMPONENT library
    FILES_MATCHING
    PATTERN "*.h")
endforeach()

# Paths are relative to where these files stand: what was installed may be moved as a whole.
set(library_pkgconfig ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH library_prefix ${CMAKE_INSTALL_PREFIX}/${library_pkgconfig} ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/orlocalstore.pc.in ${PROJECT_BINARY_DIR}/generated/orlocalstore.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/generated/orlocalstore.pc DESTINATION ${library_pkgconfig} COMPONENT library)

include(CMakePackageConfigHelpers)
set(library_package ${CMAKE_INSTALL_LIBDIR}/cmake/orlocalstore)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/orlocalstoreConfig.cmake.in ${PROJECT_BINARY_DIR}/generated/orlocalstoreConfig.cmake
  INSTALL_DESTINATION ${library_package} PATH_VARS library_headers CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/generated/orlocalstoreConfigVersion.cmake COMPATIBILITY ExactVersion)
install(FILES ${PROJECT_BINARY_DIR}/generated/orlocalstoreConfig.cmake
              ${PROJECT_BINARY_DIR}/generated/orlocalstoreConfigVersion.cmake
        DESTINATION ${library_package} COMPONENT library)

# For Python: a module that asks the program.
install(FILES python/orlocal.py DESTINATION lib/python3/dist-packages COMPONENT python)

# Where things go when they are installed: the program to the programs, what it loads into a folder of their own, and what
# is there to be read to the documentation.

include(GNUInstallDirs)
set(own_folder ${CMAKE_INSTALL_LIBDIR}/orlocal)
file(RELATIVE_PATH from_program ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/orlocal)

# The program finds the rest from where it stands itself, so that what was installed may be moved as a whole.
set_target_properties(orlocal PROPERTIES INSTALL_RPATH "$ORIGIN/${from_program}")
target_compile_definitions(orlocal_scripting_commands PRIVATE ORLOCAL_OWN_FOLDER="${from_program}")

install(TARGETS orlocal RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS Orlocal orlocal_fmwrapper LIBRARY DESTINATION ${own_folder})
install(DIRECTORY ${PROJECT_BINARY_DIR}/Orlocal.resources DESTINATION ${own_folder})
# What shells and man read comes from the program itself, so that it says what that program takes; in English.
set(guide_folder ${PROJECT_BINARY_DIR}/guide)
add_custom_command(
  OUTPUT ${guide_folder}/man/man1/orlocal.1
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${guide_folder}
  COMMAND ${CMAKE_COMMAND} -E env ORLOCAL_SETTINGS= LC_ALL=C $<TARGET_FILE:orlocal> completion-files ${guide_folder}
  DEPENDS orlocal
  VERBATIM)
add_custom_target(orlocal_guide ALL DEPENDS ${guide_folder}/man/man1/orlocal.1)
install(DIRECTORY ${guide_folder}/ DESTINATION ${CMAKE_INSTALL_DATADIR})
set(units resources/systemd)
install(FILES ${units}/orlocal-alarms.service ${units}/orlocal-backup.service ${units}/orlocal-backup.timer
              ${units}/orlocal-sync.service
        DESTINATION lib/systemd/user)
install(FILES ${units}/orlocal-alarms@.service ${units}/orlocal-backup@.service ${units}/orlocal-backup@.timer
              ${units}/orlocal-sync@.service
        DESTINATION lib/systemd/system)
install(FILES LICENSE CHANGELOG.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(
  DIRECTORY docs/
  DESTINATION ${CMAKE_INSTALL_DOCDIR}
  PATTERN site EXCLUDE)

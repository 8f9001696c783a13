# The strings tables: the English one is compiled in, so that the plug-in is whole as a single file; all of them lie
# beside it, where translations can be added or changed.
set(ORLOCAL_ENGLISH_STRINGS_FILE ${PROJECT_SOURCE_DIR}/resources/en.lproj/Orlo.strings)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ORLOCAL_ENGLISH_STRINGS_FILE})
file(READ ${ORLOCAL_ENGLISH_STRINGS_FILE} ORLOCAL_ENGLISH_STRINGS)
configure_file(${CMAKE_CURRENT_LIST_DIR}/builtin_strings.cpp.in ${PROJECT_BINARY_DIR}/generated/builtin_strings.cpp @ONLY)
target_sources(
  orlocal_platform_linux
  PRIVATE ${CMAKE_CURRENT_LIST_DIR}/bundle_strings.cpp ${CMAKE_CURRENT_LIST_DIR}/strings_table.cpp
          ${PROJECT_BINARY_DIR}/generated/builtin_strings.cpp)
target_link_libraries(orlocal_platform_linux PUBLIC ${CMAKE_DL_LIBS})

foreach(language de en es fr it ja nl pt sv zh_CN)
  configure_file(${PROJECT_SOURCE_DIR}/resources/${language}.lproj/Orlo.strings
                 ${PROJECT_BINARY_DIR}/Orlocal.resources/${language}.lproj/Orlo.strings COPYONLY)
endforeach()

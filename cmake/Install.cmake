# Installing, and the package by which other projects find the library: it may be moved as a whole.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/KorUtil)
set(installed_targets KorUtil KorPlatform KorFaultTranslation)
file(RELATIVE_PATH from_bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
if(NOT WIN32)
  set_target_properties(KorUtil KorPlatform PROPERTIES INSTALL_RPATH "$ORIGIN")
  set_target_properties(korutil PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin_to_lib}")
  install(TARGETS korutil RUNTIME)
  install(FILES docs/korutil.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
install(TARGETS ${installed_targets} EXPORT KorUtil)
install(DIRECTORY include/korutil DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES docs/format-initialisation-file.md docs/format-registry-text.md docs/format-tag-tree.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(EXPORT KorUtil NAMESPACE KorUtil:: DESTINATION ${package_dir} FILE KorUtilTargets.cmake)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/KorUtilConfig.cmake
     CONTENT "include(\"\${CMAKE_CURRENT_LIST_DIR}/KorUtilTargets.cmake\")\n" @ONLY)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/KorUtilConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/KorUtilConfig.cmake ${CMAKE_BINARY_DIR}/KorUtilConfigVersion.cmake
        DESTINATION ${package_dir})

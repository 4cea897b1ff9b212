# cmake --install: header, library, command-line host, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS QOROCV460 EXPORT QOROCV460Targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS qorfaces RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/qorocv460 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QOROCV460)
install(EXPORT QOROCV460Targets NAMESPACE QOROCV460:: DESTINATION ${package_dir}
  FILE QOROCV460Config.cmake)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QOROCV460ConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/QOROCV460ConfigVersion.cmake" DESTINATION ${package_dir})

configure_file(cmake/qorocv460.pc.in "${PROJECT_BINARY_DIR}/qorocv460.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/qorocv460.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

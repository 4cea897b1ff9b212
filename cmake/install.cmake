# cmake --install: headers, libraries, command-line host, CMake package and pkg-config file. All of them find each
# other by where they lie from one another, so that the prefix can be chosen late and moved.
include(CMakePackageConfigHelpers)

if(NOT WIN32) # which looks for the library beside the program
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY "${CMAKE_INSTALL_FULL_BINDIR}"
    OUTPUT_VARIABLE from_program_to_library)
  set_target_properties(qorfaces PROPERTIES INSTALL_RPATH "$ORIGIN/${from_program_to_library}")
endif()

install(TARGETS QOROCV460 QOROCV460Safe EXPORT QOROCV460Targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS qorfaces RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/qorocv460 client/include/qorocv460 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QOROCV460)
install(EXPORT QOROCV460Targets NAMESPACE QOROCV460:: DESTINATION ${package_dir})
# Threads, which the client asks for, are no concern of a host in C.
install(TARGETS qorocv460_client EXPORT QOROCV460ClientTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT QOROCV460ClientTargets NAMESPACE QOROCV460:: DESTINATION ${package_dir})
install(FILES cmake/QOROCV460Config.cmake DESTINATION ${package_dir})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QOROCV460ConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/QOROCV460ConfigVersion.cmake" DESTINATION ${package_dir})

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
  OUTPUT_VARIABLE from_pkgconfig_to_prefix)
foreach(name qorocv460 qorocv460-safe)
  configure_file(cmake/${name}.pc.in "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

# What makes QOROCV460.dll of the library: its name, its version resource, and import libraries.
set_target_properties(QOROCV460 PROPERTIES PREFIX "")
configure_file("${PROJECT_SOURCE_DIR}/cmake/windows/version.rc.in" "${PROJECT_BINARY_DIR}/version.rc" @ONLY)
enable_language(RC)
target_sources(QOROCV460 PRIVATE "${PROJECT_BINARY_DIR}/version.rc")

# MinGW makes libQOROCV460.dll.a; Microsoft's linker wants a .lib, which the .def is enough for.
if(MINGW)
  target_link_options(QOROCV460 PRIVATE -s)
  find_program(LLVM_DLLTOOL NAMES llvm-dlltool REQUIRED)
  set(import_library "${PROJECT_BINARY_DIR}/QOROCV460.lib")
  set(definition "${PROJECT_BINARY_DIR}/QOROCV460.def")
  add_custom_command(OUTPUT "${import_library}"
    COMMAND "${LLVM_DLLTOOL}" -m i386:x86-64 -D QOROCV460.dll -d "${definition}" -l "${import_library}"
    DEPENDS "${definition}" VERBATIM)
  add_custom_target(qorocv460_import_library ALL DEPENDS "${import_library}")
endif()

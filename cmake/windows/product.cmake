# What makes QOROCV460.dll and QOROCV460Safe.dll of the libraries: name, version resource, and import libraries.
enable_language(RC)
if(MINGW)
  find_program(LLVM_DLLTOOL NAMES llvm-dlltool REQUIRED)
endif()

function(windows_product name)
  set_target_properties(${name} PROPERTIES PREFIX "")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/windows/version.rc.in" "${PROJECT_BINARY_DIR}/${name}.rc" @ONLY)
  target_sources(${name} PRIVATE "${PROJECT_BINARY_DIR}/${name}.rc")

  # MinGW makes lib${name}.dll.a; Microsoft's linker wants a .lib, which the .def is enough for.
  if(MINGW)
    target_link_options(${name} PRIVATE -s)
    set(import_library "${PROJECT_BINARY_DIR}/${name}.lib")
    set(definition "${PROJECT_BINARY_DIR}/${name}.def")
    add_custom_command(OUTPUT "${import_library}"
      COMMAND "${LLVM_DLLTOOL}" -m i386:x86-64 -D ${name}.dll -d "${definition}" -l "${import_library}"
      DEPENDS "${definition}" VERBATIM)
    add_custom_target(${name}_import_library ALL DEPENDS "${import_library}")
  endif()
endfunction()

windows_product(QOROCV460)
windows_product(QOROCV460Safe)

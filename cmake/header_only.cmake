# find_header_only(PACKAGE TARGET DIRECTORY): a library of headers alone. A cross-compiler must not look into
# the directory that they share with this system's other headers, so it gets a link to theirs.
function(find_header_only package target directory)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(${package} REQUIRED GLOBAL)
    return()
  endif()
  find_path(${package}_PARENT ${directory} PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(headers "${PROJECT_BINARY_DIR}/header_only")
  file(MAKE_DIRECTORY "${headers}")
  file(CREATE_LINK "${${package}_PARENT}/${directory}" "${headers}/${directory}" SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} INTERFACE "${headers}")
endfunction()

find_header_only(CLI11 CLI11::CLI11 CLI)
find_header_only(nlohmann_json nlohmann_json::nlohmann_json nlohmann)

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
find_header_only(Boost boost_headers boost)
if(NOT TARGET boost_headers)
  add_library(boost_headers INTERFACE)
  target_link_libraries(boost_headers INTERFACE Boost::headers)
endif()
# The standard library's paths in place of a library of Boost's that would have to be linked.
target_compile_definitions(boost_headers INTERFACE BOOST_PROCESS_USE_STD_FS)
if(WIN32)
  # From Windows 8 on; what waits on processes and pipes there is Windows' own.
  target_compile_definitions(boost_headers INTERFACE _WIN32_WINNT=0x0602)
  target_link_libraries(boost_headers INTERFACE ws2_32 mswsock ntdll)
endif()
if(QOROCV460_SANITIZE MATCHES "thread")
  # It does not know Boost's fences, which stand between threads; the scan's events have one.
  target_compile_options(boost_headers INTERFACE -Wno-tsan)
endif()

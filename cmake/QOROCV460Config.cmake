# QOROCV460::QOROCV460, the library; with COMPONENTS client also QOROCV460::client, C++ over it.
include("${CMAKE_CURRENT_LIST_DIR}/QOROCV460Targets.cmake")

foreach(component IN LISTS QOROCV460_FIND_COMPONENTS)
  if(component STREQUAL "client")
    include(CMakeFindDependencyMacro)
    find_dependency(Threads)
    include("${CMAKE_CURRENT_LIST_DIR}/QOROCV460ClientTargets.cmake")
    set(QOROCV460_client_FOUND TRUE)
  elseif(QOROCV460_FIND_REQUIRED_${component})
    set(QOROCV460_FOUND FALSE)
    set(QOROCV460_NOT_FOUND_MESSAGE "QOROCV460 has no component ${component}")
  endif()
endforeach()

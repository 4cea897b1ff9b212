# Every test is a process of its own, so that registry, slots, shared pair and locale are fresh.
include(GoogleTest)

if(WIN32)
  # Debian ships GoogleTest for cross-compiling as sources.
  add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
  # Programs that need an emulator are not run while building.
  set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
else()
  find_package(GTest REQUIRED GLOBAL)
endif()

# After how many seconds a test is taken to hang. No test needs a tenth of that, so that a slow or busy
# machine passes, too.
set(QOROCV460_TEST_TIMEOUT 1500 CACHE STRING "Seconds after which a test is taken to hang")
set(hanging ${QOROCV460_TEST_TIMEOUT})

set(test_environment "LC_ALL=C.UTF-8")
if(WIN32)
  # The library has an OpenCV of its own there, which only its environment keeps on one thread. Elsewhere tests
  # and library share one, which support/opencv_test_main.cpp keeps on one thread; the environment would not.
  set(test_environment "OPENCV_FOR_THREADS_NUM=1")
endif()

# add_library_tests(NAME SOURCES source... LIBS lib... [REPORTS suite...]): a test program around OpenCV.
# The suites of REPORTS write the report file and take turns with each other.
function(add_library_tests name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS;REPORTS")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} qorocv460_test_main qorocv460_warnings)
  set(others)
  if(arg_REPORTS)
    list(TRANSFORM arg_REPORTS APPEND ".*")
    list(JOIN arg_REPORTS ":" reports)
    set(others TEST_FILTER "-${reports}")
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 TEST_FILTER "${reports}"
      PROPERTIES TIMEOUT ${hanging} ENVIRONMENT "${test_environment}" RESOURCE_LOCK report_file)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 ${others}
    PROPERTIES TIMEOUT ${hanging} ENVIRONMENT "${test_environment}")
endfunction()

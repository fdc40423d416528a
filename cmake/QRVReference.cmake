# SPDX-License-Identifier: MIT
# The reference of the public headers: `cmake --build FOLDER --target reference` generates
# FOLDER/Reference/html/index.html. A Doxygen warning is an error.
find_package(Doxygen QUIET)
if(NOT DOXYGEN_FOUND)
  message(STATUS "No reference of the headers: Doxygen was not found")
  return()
endif()

set(QRV_REFERENCE_FOLDER "${PROJECT_BINARY_DIR}/Reference")
get_target_property(headers QRVSettings HEADER_SET)
get_target_property(adapters QRVSettings HEADER_SET_adapters)
set(input ${headers} ${adapters})
list(TRANSFORM input PREPEND "\"")
list(TRANSFORM input APPEND "\"")
string(JOIN " " QRV_REFERENCE_INPUT ${input})
configure_file("${CMAKE_CURRENT_LIST_DIR}/Doxyfile.in" "${QRV_REFERENCE_FOLDER}/Doxyfile" @ONLY)
add_custom_target(reference COMMAND Doxygen::doxygen "${QRV_REFERENCE_FOLDER}/Doxyfile" USES_TERMINAL)
if(QRV_BUILD_TESTS)
  add_test(NAME Checks.Reference COMMAND Doxygen::doxygen "${QRV_REFERENCE_FOLDER}/Doxyfile")
  set_tests_properties(Checks.Reference PROPERTIES FIXTURES_SETUP reference)
  file(STRINGS "${PROJECT_SOURCE_DIR}/Documentation/Tour.md" heading LIMIT_COUNT 1 REGEX "^# ")
  string(SUBSTRING "${heading}" 2 -1 heading)
  add_test(NAME Checks.ReferenceBeginsWithTheTour
    COMMAND "${CMAKE_COMMAND}" -E cat "${QRV_REFERENCE_FOLDER}/html/index.html")
  set_tests_properties(Checks.ReferenceBeginsWithTheTour PROPERTIES
    FIXTURES_REQUIRED reference PASS_REGULAR_EXPRESSION "class=\"title\">${heading}")
endif()

# SPDX-License-Identifier: MIT
# Compiles each public header as C++17, and requires one error that names C++20.
#
#     cmake -D COMPILER=g++ -D INCLUDE=Frameworks/include -D HEADERS=a.h,b.h -P StandardTooOld.cmake
string(REPLACE "," ";" headers "${HEADERS}")
foreach(header IN LISTS headers)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E echo "#include \"${header}\""
    COMMAND "${COMPILER}" -std=c++17 -fsyntax-only "-I${INCLUDE}" -x c++ -
    RESULT_VARIABLE result ERROR_VARIABLE messages)
  string(REGEX MATCHALL "error: " errors "${messages}")
  list(LENGTH errors count)
  if(result EQUAL 0 OR NOT count EQUAL 1 OR NOT messages MATCHES "error: [^\n]*needs C\\+\\+20")
    message(FATAL_ERROR "${header} as C++17 gives ${count} errors:\n${messages}")
  endif()
endforeach()

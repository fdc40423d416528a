# SPDX-License-Identifier: MIT
# Compiler options of every target: `qrv_compile(target)`.

if(QRV_DEVELOPER)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
endif()
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

# Developers compile again what they compiled before, in another branch or after a clean-up: ccache knows the
# result. It has to be told that what is precompiled may stand for its headers.
set(QRV_USES_CCACHE OFF)
if(QRV_DEVELOPER AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(QRV_CCACHE ccache)
  if(QRV_CCACHE)
    set(QRV_USES_CCACHE ON)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
      CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime "${QRV_CCACHE}")
    set(CMAKE_C_COMPILER_LAUNCHER "${CMAKE_CXX_COMPILER_LAUNCHER}")
  endif()
endif()

if(QRV_FUZZERS AND NOT (CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND QRV_SANITIZER STREQUAL "address"))
  message(FATAL_ERROR "QRV_FUZZERS needs clang and QRV_SANITIZER=address")
endif()

function(qrv_compile target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  if(QRV_DEVELOPER)
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -UNDEBUG -D_GLIBCXX_ASSERTIONS
      "$<$<CXX_COMPILER_ID:Clang>:-Wreserved-identifier;-Wthread-safety>")
  endif()
  if(QRV_USES_CCACHE)
    target_compile_options(${target} PRIVATE
      "$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>"
      "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-Xclang -fno-pch-timestamp>")
  endif()
  set(flags "")
  if(QRV_SANITIZER STREQUAL "address")
    set(flags -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  elseif(QRV_SANITIZER STREQUAL "thread")
    set(flags -fsanitize=thread -fno-omit-frame-pointer)
  elseif(QRV_SANITIZER)
    message(FATAL_ERROR "QRV_SANITIZER is \"${QRV_SANITIZER}\"; it takes address or thread")
  endif()
  target_compile_options(${target} PRIVATE ${flags})
  target_link_options(${target} PRIVATE ${flags})
endfunction()

# Instruments a target so that fuzzers can see which code an input reaches.
function(qrv_instrument target)
  if(QRV_FUZZERS)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()

# Hardens what is shipped, in case hostile input meets a fault. Sanitizers find the faults themselves, and
# do not work with all of these options.
function(qrv_harden target)
  if(QRV_SANITIZER)
    return()
  endif()
  target_compile_options(${target} PRIVATE
    -fstack-protector-strong -fstack-clash-protection
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  target_link_options(${target} PRIVATE "LINKER:-z,relro,-z,now,-z,noexecstack")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    target_link_options(${target} PRIVATE -pie)
  endif()
endfunction()

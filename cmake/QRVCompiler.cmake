# SPDX-License-Identifier: MIT
# Compiler options of every target: `qrv_compile(target)`.

if(QRV_DEVELOPER)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
endif()
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
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

# SPDX-License-Identifier: MIT
# qrv_compress(RESULT source name): a command that makes a compressed file of the build folder, whose path
# RESULT receives. The same source gives the same bytes.
find_program(QRV_GZIP gzip REQUIRED)

function(qrv_compress result source name)
  set(compressed "${PROJECT_BINARY_DIR}/compressed/${name}.gz")
  get_filename_component(folder "${compressed}" DIRECTORY)
  file(MAKE_DIRECTORY "${folder}")
  add_custom_command(OUTPUT "${compressed}"
    COMMAND "${QRV_GZIP}" -9nc "${source}" > "${compressed}"
    DEPENDS "${source}" VERBATIM)
  set(${result} "${compressed}" PARENT_SCOPE)
endfunction()

# SPDX-License-Identifier: MIT
# Install rules, in components: Library (to run hosts), History (to run hosts that remember changes),
# Development (to build hosts), Tool, Window, and Documentation. No installed file contains the install prefix, so
# that the installation can be moved.
include(GNUInstallDirs)
include(QRVCompressed)
include(CMakePackageConfigHelpers)

set(QRV_INSTALL_HEADERS "${CMAKE_INSTALL_INCLUDEDIR}/qrvsettings")
set(QRV_INSTALL_PACKAGE "${CMAKE_INSTALL_LIBDIR}/cmake/QRVSettings")

install(TARGETS QRVSettings QRVSettingsStatic EXPORT QRVSettingsTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Library NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Development
  FILE_SET HEADERS DESTINATION "${QRV_INSTALL_HEADERS}" COMPONENT Development
  FILE_SET adapters DESTINATION "${QRV_INSTALL_HEADERS}" COMPONENT Development
  INCLUDES DESTINATION "${QRV_INSTALL_HEADERS}")
# An export of its own: a package without it must not name a library that is not there.
if(TARGET QRVHistory)
  if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")  # where the linker looks anyway
    set_target_properties(QRVHistory PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
  install(TARGETS QRVHistory EXPORT QRVHistoryTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT History NAMELINK_COMPONENT Development
    FILE_SET HEADERS DESTINATION "${QRV_INSTALL_HEADERS}" COMPONENT Development
    INCLUDES DESTINATION "${QRV_INSTALL_HEADERS}")
  install(EXPORT QRVHistoryTargets NAMESPACE QRVSettings::
    DESTINATION "${QRV_INSTALL_PACKAGE}" COMPONENT Development)
endif()
install(EXPORT QRVSettingsTargets NAMESPACE QRVSettings::
  DESTINATION "${QRV_INSTALL_PACKAGE}" COMPONENT Development)
configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/QRVSettingsConfig.cmake.in" "${PROJECT_BINARY_DIR}/QRVSettingsConfig.cmake"
  INSTALL_DESTINATION "${QRV_INSTALL_PACKAGE}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/QRVSettingsConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/QRVSettingsConfig.cmake" "${PROJECT_BINARY_DIR}/QRVSettingsConfigVersion.cmake"
  DESTINATION "${QRV_INSTALL_PACKAGE}" COMPONENT Development)

file(RELATIVE_PATH QRV_PREFIX_FROM_PKGCONFIG
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/qrvsettings.pc.in" "${PROJECT_BINARY_DIR}/qrvsettings.pc" @ONLY)
if(TARGET QRVHistory)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/qrvhistory.pc.in" "${PROJECT_BINARY_DIR}/qrvhistory.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/qrvhistory.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT Development)
endif()
install(FILES "${PROJECT_BINARY_DIR}/qrvsettings.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT Development)

# qrv_install_program(target component)
# Built at once as it is installed: otherwise CMake leaves room in the run path for the installed one, as an
# empty entry, and the dynamic linker looks for every library in the working folder. So the program in the
# build finds its libraries where the installed one does.
function(qrv_install_program target component)
  file(RELATIVE_PATH libraries_from_program "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set_target_properties(${target} PROPERTIES
    INSTALL_RPATH "$ORIGIN/${libraries_from_program}" BUILD_WITH_INSTALL_RPATH ON)
  get_target_property(folder_of_program ${target} BINARY_DIR)
  get_filename_component(libraries "${folder_of_program}/${libraries_from_program}" ABSOLUTE)
  get_filename_component(folder_above "${libraries}" DIRECTORY)
  file(MAKE_DIRECTORY "${folder_above}")
  file(CREATE_LINK "${PROJECT_BINARY_DIR}/Frameworks" "${libraries}" SYMBOLIC)
  install(TARGETS ${target} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT ${component})
endfunction()

if(TARGET qrvsettings-window)
  qrv_install_program(qrvsettings-window Window)
  set(desktop "${PROJECT_SOURCE_DIR}/Tools/qrvsettings-window/Desktop")
  install(FILES "${desktop}/qrvsettings-window.desktop"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/applications" COMPONENT Window)
  install(FILES "${desktop}/qrvsettings-window.svg"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps" COMPONENT Window)
endif()

if(TARGET qrvsettings)
  qrv_install_program(qrvsettings Tool)

  # Each shell looks for completions in its own folder.
  set(QRV_COMPLETIONS "${PROJECT_BINARY_DIR}/completions")
  add_custom_command(OUTPUT "${QRV_COMPLETIONS}/bash" "${QRV_COMPLETIONS}/zsh" "${QRV_COMPLETIONS}/fish"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${QRV_COMPLETIONS}"
    COMMAND qrvsettings completion bash > "${QRV_COMPLETIONS}/bash"
    COMMAND qrvsettings completion zsh > "${QRV_COMPLETIONS}/zsh"
    COMMAND qrvsettings completion fish > "${QRV_COMPLETIONS}/fish"
    DEPENDS qrvsettings VERBATIM)
  add_custom_target(QRVCompletions ALL DEPENDS "${QRV_COMPLETIONS}/bash")
  install(FILES "${QRV_COMPLETIONS}/bash" RENAME qrvsettings
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT Tool)
  install(FILES "${QRV_COMPLETIONS}/zsh" RENAME _qrvsettings
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT Tool)
  install(FILES "${QRV_COMPLETIONS}/fish" RENAME qrvsettings.fish
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT Tool)
endif()

# Functions are for those who build hosts, that of the window for those who use it, and all other pages for
# those who use the tool.
file(GLOB pages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/Documentation/man/*.[1-9]")
set(compressed_pages "")
foreach(page ${pages})
  get_filename_component(name "${page}" NAME)
  string(REGEX MATCH "[1-9]$" section "${name}")
  qrv_compress(compressed "${page}" "${name}")
  list(APPEND compressed_pages "${compressed}")
  if(section EQUAL 3)
    set(component Development)
    set(program QRVSettings)
  elseif(name MATCHES "^qrvsettings-window")
    set(component Window)
    set(program qrvsettings-window)
  else()
    set(component Tool)
    set(program qrvsettings)
  endif()
  if(TARGET ${program})
    install(FILES "${compressed}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}" COMPONENT "${component}")
  endif()
endforeach()
add_custom_target(QRVManualPages ALL DEPENDS ${compressed_pages})
# The page of the functions is found by the name of each.
file(READ "${PROJECT_SOURCE_DIR}/Frameworks/include/QRVSettings/QRVSettingsC.h" interface)
string(REGEX MATCHALL "QRV_EXPORT [^;(]*\\(" functions "${interface}")
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/compressed/functions")
foreach(function ${functions})
  string(REGEX MATCH "qrv_[a-z0-9_]+\\($" name "${function}")
  string(REPLACE "(" ".3.gz" name "${name}")
  file(CREATE_LINK qrvsettings.3.gz "${PROJECT_BINARY_DIR}/compressed/functions/${name}" SYMBOLIC)
  install(FILES "${PROJECT_BINARY_DIR}/compressed/functions/${name}"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man3" COMPONENT Development)
endforeach()

set(documents "${CMAKE_INSTALL_DATAROOTDIR}/doc/qrvsettings-doc")
file(GLOB texts CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/Documentation/*.md")
install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/ARCHITECTURE.md"
  DESTINATION "${documents}" COMPONENT Documentation)
install(FILES ${texts} DESTINATION "${documents}/Documentation" COMPONENT Documentation)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/Examples/" DESTINATION "${documents}/examples" COMPONENT Documentation
  PATTERN "__pycache__" EXCLUDE)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT Library)

include(QRVPackage)

# SPDX-License-Identifier: MIT
# Debian packages, of a build for their prefix: `cmake --workflow --preset debian`. Which package has which
# files is the table at the end.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  return()  # other prefixes have other folders for libraries, and other names for those of documents
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qrvsettings)
set(CPACK_PACKAGE_CONTACT "The QRVSettings developers <qrvsettings@qrv.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/Frameworks")
# A program that was linked with this release may use what the release before did not have.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# Otherwise this would be the first line of every package's description, before its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_NAME} built using CMake")
set(QRV_DEBIAN_VERSION "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

set(QRV_DEBIAN_FILES "${CMAKE_CURRENT_LIST_DIR}/debian")
set(changelog "${QRV_DEBIAN_FILES}/changelog")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${changelog}")
file(STRINGS "${changelog}" first LIMIT_COUNT 1)
if(NOT first MATCHES "^qrvsettings \\(${QRV_DEBIAN_VERSION}\\) ")
  message(FATAL_ERROR "${changelog} begins with another version than ${QRV_DEBIAN_VERSION}: ${first}")
endif()
qrv_compress(QRV_DEBIAN_CHANGELOG "${changelog}" changelog.Debian)
add_custom_target(QRVDebianChangelog ALL DEPENDS "${QRV_DEBIAN_CHANGELOG}")

# qrv_debian_package(component NAME name SECTION section SUMMARY text TEXT text [SHARED_LIBRARY]
#   [ALL_ARCHITECTURES] [DEPENDS ...] [RECOMMENDS ...] [SUGGESTS ...])
# A package of the files that install() gives this component. Its description begins with SUMMARY; TEXT goes
# on in lines of at most 79 characters. What its programs and libraries link is found out, other than
# libraries of this project; those are named in DEPENDS.
macro(qrv_debian_package component)
  cmake_parse_arguments(arg "SHARED_LIBRARY;ALL_ARCHITECTURES" "NAME;SECTION;SUMMARY;TEXT"
    "DEPENDS;RECOMMENDS;SUGGESTS" ${ARGN})
  string(TOUPPER "${component}" upper)
  set(prefix "CPACK_DEBIAN_${upper}")
  list(APPEND CPACK_COMPONENTS_ALL "${component}")
  set(${prefix}_PACKAGE_NAME "${arg_NAME}")
  set(${prefix}_PACKAGE_SECTION "${arg_SECTION}")
  set(${prefix}_DESCRIPTION "${PROJECT_DESCRIPTION}, ${arg_SUMMARY}\n${arg_TEXT}")
  if(arg_ALL_ARCHITECTURES)
    set(${prefix}_PACKAGE_ARCHITECTURE all)
    set(${prefix}_PACKAGE_SHLIBDEPS OFF)
  else()
    set(${prefix}_PACKAGE_SHLIBDEPS ON)
  endif()
  if(arg_SHARED_LIBRARY)
    set(${prefix}_PACKAGE_CONTROL_EXTRA "${QRV_DEBIAN_FILES}/triggers")
  endif()
  foreach(field DEPENDS RECOMMENDS SUGGESTS)
    string(JOIN ", " ${prefix}_PACKAGE_${field} ${arg_${field}})
  endforeach()
  set(folder "${CMAKE_INSTALL_DATAROOTDIR}/doc/${arg_NAME}")
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" RENAME copyright DESTINATION "${folder}" COMPONENT "${component}")
  install(FILES "${QRV_DEBIAN_CHANGELOG}" DESTINATION "${folder}" COMPONENT "${component}")
endmacro()

# A component of another part of the project gets its row here, inside if(TARGET ...) where that part may be
# left out of the build, and its name among those that Tests/Package/debian.py expects.
set(library "libqrvsettings${PROJECT_VERSION_MAJOR}")
# ICU is loaded at run time, so that its package is not found out. Only unknown locales need it.
find_package(ICU REQUIRED COMPONENTS i18n uc)
string(REGEX MATCH "^[0-9]+" icu_major "${ICU_VERSION}")
qrv_debian_package(Library NAME "${library}" SECTION libs SHARED_LIBRARY
  RECOMMENDS "libicu${icu_major}"
  SUMMARY "shared library"
  TEXT "Several processes read, write and watch one property-list file of settings,
each with a dotted key path.")
set(depends_of_development "${library} (= ${QRV_DEBIAN_VERSION})" libmd-dev)
set(depends_of_tool "${library} (= ${QRV_DEBIAN_VERSION})")
if(TARGET QRVHistory)
  set(history "libqrvhistory${PROJECT_VERSION_MAJOR}")
  list(APPEND depends_of_development "${history} (= ${QRV_DEBIAN_VERSION})")
  list(APPEND depends_of_tool "${history} (= ${QRV_DEBIAN_VERSION})")
  qrv_debian_package(History NAME "${history}" SECTION libs SHARED_LIBRARY
    DEPENDS "${library} (= ${QRV_DEBIAN_VERSION})"
    SUMMARY "history of changes"
    TEXT "Remembers in a database of SQLite which program changed which setting when,
and tells what takes a change back.")
endif()
qrv_debian_package(Development NAME libqrvsettings-dev SECTION libdevel
  DEPENDS ${depends_of_development}
  SUGGESTS qrvsettings-doc
  SUMMARY "development files"
  TEXT "The headers for C++20 and C, the static library, the manual page of the C
interface, and files for CMake and pkg-config.")
qrv_debian_package(Documentation NAME qrvsettings-doc SECTION doc ALL_ARCHITECTURES
  SUGGESTS libqrvsettings-dev
  SUMMARY "documents and examples"
  TEXT "A tour for developers, what is promised about files, locks and processes,
measured speed, and small programs that use the library.")
if(TARGET qrvsettings)
  qrv_debian_package(Tool NAME qrvsettings SECTION utils
    DEPENDS ${depends_of_tool}
    SUMMARY "command-line tool"
    TEXT "Reads, writes, compares and watches the settings, and explains where a value
comes from.")
endif()

if(TARGET qrvsettings-window)
  qrv_debian_package(Window NAME qrvsettings-window SECTION utils
    DEPENDS ${depends_of_tool}
    RECOMMENDS qrvsettings qt6-wayland qt6-translations-l10n
    SUMMARY "window"
    TEXT "Shows every setting with the layer that its value comes from, marks what
other processes change, and edits settings in batches that can be reviewed
and undone.")
endif()

install(DIRECTORY "${PROJECT_SOURCE_DIR}/Python/qrvsettings" DESTINATION lib/python3/dist-packages COMPONENT Python
  FILES_MATCHING PATTERN "*.py" PATTERN py.typed PATTERN __pycache__ EXCLUDE)
qrv_debian_package(Python NAME python3-qrvsettings SECTION python ALL_ARCHITECTURES
  DEPENDS "python3 (>= 3.9)" "${library} (>= ${PROJECT_VERSION})"
  SUMMARY "package for Python 3"
  TEXT "Reads, writes and watches the settings, with exact kinds, in asyncio too.")

include(CPack)

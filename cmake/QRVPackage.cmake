# SPDX-License-Identifier: MIT
# Debian packages: `cpack -G DEB` in the build folder builds libqrvsettings7, libqrvsettings-dev and
# qrvsettings.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qrvsettings)
set(CPACK_PACKAGE_CONTACT "The QRVSettings developers <qrvsettings@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Library Development)
if(TARGET qrvsettings)
  list(APPEND CPACK_COMPONENTS_ALL Tool)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

set(library "libqrvsettings${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/Frameworks")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "${library}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "${PROJECT_DESCRIPTION}, shared library")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
# ICU is loaded at run time, so that shlibdeps does not find it. Only unknown locales need it.
find_package(ICU REQUIRED COMPONENTS i18n uc)
string(REGEX MATCH "^[0-9]+" icu_major "${ICU_VERSION}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "libicu${icu_major}")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqrvsettings-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION}, headers and static library")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION}), libmd-dev")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME qrvsettings)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "${PROJECT_DESCRIPTION}, command-line tool")
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION})")

include(CPack)

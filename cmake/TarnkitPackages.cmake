# Debian packages, of the preset `packages`: see scripts/packages. One for each component of
# cmake/TarnkitInstall.cmake.

set(library_package "libtarnkit${TARNKIT_SOVERSION}")
set(TARNKIT_MAINTAINER "The Tarnkit developers <tarnkit@example.org>" CACHE STRING
    "Who answers for the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnkit)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "${TARNKIT_MAINTAINER}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/debs")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ
    GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL host library dev doc)
if(TARNKIT_PYTHON_MODULE)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the program and the library link against is asked of the distribution's own tool.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own first line

set(same "(= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_HOST_PACKAGE_NAME tarnkit)
set(CPACK_DEBIAN_HOST_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_HOST_PACKAGE_DEPENDS "${library_package} ${same}")
set(CPACK_COMPONENT_HOST_DESCRIPTION "documents of interactive prototypes on the command line
Opens, edits, compares, merges, checks and draws the documents of an editor
for interactive prototypes, writes what the device runs, and evaluates
mathematical expressions.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "${library_package}")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
# What others that link it then depend on, and that the system's cache of libraries is made anew.
set(control "${PROJECT_BINARY_DIR}/debian/control")
file(WRITE "${control}/shlibs"
     "libtarnkit ${TARNKIT_SOVERSION} ${library_package} (>= ${PROJECT_VERSION})\n")
file(WRITE "${control}/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${control}/shlibs" "${control}/triggers")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "model layer of an editor for interactive prototypes
Patch graphs: documents of groups, nodes, ports and connections that follow
the definitions of a catalogue of patches; undo, differences, merges, checks,
pictures; and an engine for mathematical expressions.")

# Headers of the library include none of what it stands on; its archives are linked with that.
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libtarnkit-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${library_package} ${same}, libfmt-dev, libicu-dev, \
libexpat1-dev, libmd-dev, zlib1g-dev, libpng-dev, libtiff-dev, libjpeg62-turbo-dev | libjpeg-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS libtarnkit-doc)
set(CPACK_COMPONENT_DEV_DESCRIPTION "model layer of an editor for interactive prototypes: headers
What it takes to compile against the library: headers, the shared library's
name, the archives of its rooms, and files for CMake and pkg-config.")

set(CPACK_DEBIAN_DOC_PACKAGE_NAME libtarnkit-doc)
set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOC_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DOC_DESCRIPTION "model layer of an editor for interactive prototypes: manual
The manual of the library and of its command-line host: getting started, a
cookbook for editors, the formats of files, the language of expressions.")

# The interpreter for which the module is built and no other: the name of its file says so, too.
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-tarnkit)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${library_package} ${same}, python3 (>= 3.11), \
python3 (<< 3.12)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS python3-numpy)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS libtarnkit-doc)
file(WRITE "${control}/postinst" "#!/bin/sh
set -e
if [ \"$1\" = configure ] && command -v py3compile >/dev/null 2>&1; then
  py3compile -p python3-tarnkit
fi
")
file(WRITE "${control}/prerm" "#!/bin/sh
set -e
if command -v py3clean >/dev/null 2>&1; then
  py3clean -p python3-tarnkit
fi
")
file(CHMOD "${control}/postinst" "${control}/prerm" PERMISSIONS OWNER_READ OWNER_WRITE
     OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA "${control}/postinst" "${control}/prerm")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "model layer of an editor for interactive prototypes: Python
The library as a module of Python 3: documents of patches to be opened,
edited, checked, compared, merged, drawn and sent, and expressions computed
over numbers and arrays.")

# What each package of the distribution has: who made it, and what has changed.
execute_process(COMMAND git -C "${PROJECT_SOURCE_DIR}" log -1 --format=%cD
                OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT date)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
endif()
string(REGEX MATCH "[12][0-9][0-9][0-9]" year "${date}")
set(parts "${PROJECT_BINARY_DIR}/debian")
file(WRITE "${parts}/copyright" "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: tarnkit

Files: *
Copyright: ${year} ${TARNKIT_MAINTAINER}
License: to-be-told
 The makers have not said under which licence they hand on what they made.
")
file(WRITE "${parts}/changelog" "tarnkit (${PROJECT_VERSION}) unstable; urgency=medium

  * What has changed is told in CHANGELOG.md of libtarnkit-doc.

 -- ${TARNKIT_MAINTAINER}  ${date}
")
execute_process(COMMAND gzip -9nf "${parts}/changelog" COMMAND_ERROR_IS_FATAL ANY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  install(FILES "${parts}/copyright" "${parts}/changelog.gz"
          DESTINATION "share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}"
          COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)

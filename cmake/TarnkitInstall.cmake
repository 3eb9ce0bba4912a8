include(CMakePackageConfigHelpers)

# Components, which are also the packages of cmake/TarnkitPackages.cmake: `host`, the program;
# `library`, what a program that was linked with libtarnkit.so needs to run; `dev`, what it takes to
# compile and link one; `doc`, the manual.
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tarnkit")

install(TARGETS ${TARNKIT_TARGETS} EXPORT tarnkitTargets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT dev)
install(EXPORT tarnkitTargets NAMESPACE tarnkit:: DESTINATION "${package_dir}" COMPONENT dev)
# Which headers are public is found when they are installed, so that editing one is no reason to
# configure again.
install(CODE "include(\"${PROJECT_SOURCE_DIR}/cmake/TarnkitHeaders.cmake\")
tarnkit_install_headers(\"${PROJECT_SOURCE_DIR}\" \"${CMAKE_INSTALL_INCLUDEDIR}\")" COMPONENT dev)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/tarnkitConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/tarnkitConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tarnkitConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tarnkitConfig.cmake"
              "${PROJECT_BINARY_DIR}/tarnkitConfigVersion.cmake"
        DESTINATION "${package_dir}" COMPONENT dev)

# pkg-config has no notion of a floor: each file lists the archives in linking order, and what they
# stand on. The shared library brings along what it stands on.
set(archives "")
set(math_archives "")
foreach(room render compare text editing model patches archive images math foundation platform)
  get_target_property(type tarnkit_${room} TYPE)
  if(type STREQUAL "STATIC_LIBRARY")
    string(APPEND archives " -ltarnkit_${room}")
    if(room MATCHES "^(math|foundation|platform)$")
      string(APPEND math_archives " -ltarnkit_${room}")
    endif()
  endif()
endforeach()
set(math_requires "Requires: fmt icu-uc icu-i18n expat libmd")
set(all_requires "fmt icu-uc icu-i18n expat libmd zlib libpng libtiff-4 libjpeg")
if(BUILD_SHARED_LIBS)
  set(archives " -ltarnkit")
  set(all_requires "Requires.private: ${all_requires}")
else()
  set(all_requires "Requires: ${all_requires}")
endif()
# Relative, so that an installed tree may be moved.
file(RELATIVE_PATH TARNKIT_PC_PREFIX
     "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" TARNKIT_PC_PREFIX "${TARNKIT_PC_PREFIX}")
function(tarnkit_pkg_config name description requires libraries)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/package.pc.in" "${PROJECT_BINARY_DIR}/${name}.pc"
                 @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc"
          DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT dev)
endfunction()
tarnkit_pkg_config(tarnkit "${PROJECT_DESCRIPTION}" "${all_requires}" "${archives}")
tarnkit_pkg_config(tarnkit-math "The expression engine of tarnkit alone" "${math_requires}"
                   "${math_archives}")

# As it lies in the tree, so that its links lead somewhere.
set(manual_dir "${CMAKE_INSTALL_DATADIR}/doc/libtarnkit-doc")
install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
              "${PROJECT_SOURCE_DIR}/CONTRIBUTING.md"
        DESTINATION "${manual_dir}" COMPONENT doc EXCLUDE_FROM_ALL)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" "${PROJECT_SOURCE_DIR}/examples"
        DESTINATION "${manual_dir}" COMPONENT doc EXCLUDE_FROM_ALL
        PATTERN "Doxyfile" EXCLUDE PATTERN "__pycache__" EXCLUDE)

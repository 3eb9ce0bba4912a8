include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tarnkit")

install(TARGETS ${TARNKIT_TARGETS} EXPORT tarnkitTargets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(EXPORT tarnkitTargets NAMESPACE tarnkit:: DESTINATION "${package_dir}")
# Which headers are public is found when they are installed, so that editing one is no reason to
# configure again.
install(CODE "include(\"${PROJECT_SOURCE_DIR}/cmake/TarnkitHeaders.cmake\")
tarnkit_install_headers(\"${PROJECT_SOURCE_DIR}\" \"${CMAKE_INSTALL_INCLUDEDIR}\")")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/tarnkitConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/tarnkitConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tarnkitConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/tarnkitConfig.cmake"
              "${PROJECT_BINARY_DIR}/tarnkitConfigVersion.cmake"
        DESTINATION "${package_dir}")

# pkg-config has no notion of a floor: each file lists the archives in linking order.
set(TARNKIT_PC_MATH_LIBS "")
set(TARNKIT_PC_LIBS "")
foreach(room render compare text editing model patches archive images math foundation platform)
  get_target_property(type tarnkit_${room} TYPE)
  if(type STREQUAL "STATIC_LIBRARY")
    string(APPEND TARNKIT_PC_LIBS " -ltarnkit_${room}")
    if(room MATCHES "^(math|foundation|platform)$")
      string(APPEND TARNKIT_PC_MATH_LIBS " -ltarnkit_${room}")
    endif()
  endif()
endforeach()
# Relative, so that an installed tree may be moved.
file(RELATIVE_PATH TARNKIT_PC_PREFIX
     "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" TARNKIT_PC_PREFIX "${TARNKIT_PC_PREFIX}")
foreach(package tarnkit tarnkit-math)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in"
                 "${PROJECT_BINARY_DIR}/${package}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${package}.pc"
          DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()

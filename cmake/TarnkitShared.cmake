# All of the library as one shared object, libtarnkit.so, for BUILD_SHARED_LIBS. The archives of the
# rooms are built beside it from the same objects: a tool that wants the expression engine alone, or
# no shared object, takes these.

set(objects "")
foreach(target IN LISTS TARNKIT_TARGETS)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "STATIC_LIBRARY")
    list(APPEND objects "$<TARGET_OBJECTS:${target}>")
  endif()
endforeach()
add_library(tarnkit_shared SHARED ${objects})

# While MAJOR is 0 every MINOR may break the binary interface: see docs/versions.md.
set(soversion "${PROJECT_VERSION_MAJOR}")
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(soversion "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
endif()
set(TARNKIT_SOVERSION "${soversion}")
set(exports "${PROJECT_SOURCE_DIR}/cmake/libtarnkit.map")
set_target_properties(tarnkit_shared PROPERTIES
  OUTPUT_NAME tarnkit EXPORT_NAME shared LINKER_LANGUAGE CXX
  VERSION "${PROJECT_VERSION}" SOVERSION "${soversion}" LINK_DEPENDS "${exports}")
target_link_options(tarnkit_shared PRIVATE "LINKER:--version-script=${exports}"
                    "LINKER:--no-undefined" "LINKER:--as-needed")
# No header of the library includes one of theirs.
target_link_libraries(tarnkit_shared PRIVATE ${TARNKIT_DEPENDENCIES})
target_compile_features(tarnkit_shared PUBLIC cxx_std_20)
target_include_directories(tarnkit_shared PUBLIC
  "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
  "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")

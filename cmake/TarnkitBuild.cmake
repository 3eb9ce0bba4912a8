# How every target of the project is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
# Plug-ins are shared libraries and may take rooms of the library into themselves.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

  find_program(TARNKIT_CCACHE ccache)
  mark_as_advanced(TARNKIT_CCACHE)
  if(TARNKIT_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Without these ccache takes every compilation with a precompiled header for a new one.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${TARNKIT_CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      add_compile_options(-fpch-preprocess)
    elseif(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
    endif()
  endif()
  if(CMAKE_GENERATOR STREQUAL "Ninja")
    add_compile_options(-fdiagnostics-color=auto)
  endif()
endif()

if(TARNKIT_SANITIZE)
  add_compile_options(-fsanitize=${TARNKIT_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=${TARNKIT_SANITIZE})
endif()
if(TARNKIT_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TARNKIT_FUZZ needs clang++: use the preset clang-fuzz")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Debug" AND PROJECT_IS_TOP_LEVEL)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

# Warnings are for our own sources: private, never handed to whoever links the library.
function(tarnkit_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(TARNKIT_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# tarnkit_room(NAME SOURCES folder [EXCLUDE folder] [LINK …] [PRIVATE_LINK …])
# One static library `tarnkit_NAME`, exported as `tarnkit::NAME`, of all sources below the folder.
# A folder that has no source makes an interface library, so that whoever links it need not know.
set(TARNKIT_TARGETS "")
function(tarnkit_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "" "SOURCES;EXCLUDE" "LINK;PRIVATE_LINK")
  set(root "${PROJECT_SOURCE_DIR}/tarnkit")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${root}/${room_SOURCES}/*.cpp")
  if(room_EXCLUDE)
    list(FILTER sources EXCLUDE REGEX "^${root}/${room_EXCLUDE}/")
  endif()

  set(target tarnkit_${name})
  if(sources)
    set(scope PUBLIC)
    add_library(${target} STATIC ${sources})
    tarnkit_warnings(${target})
    # Nobody replaces a function of the library from outside, so that its own may be inlined.
    target_compile_options(${target} PRIVATE
      $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Debug>>>:-fno-semantic-interposition>)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <bit> <charconv> <cmath> <cstddef> <cstdint> <cstring> <functional> <limits>
      <memory> <optional> <span> <stdexcept> <string> <string_view> <type_traits>
      <unordered_map> <utility> <vector>)
    target_link_libraries(${target} PRIVATE ${room_PRIVATE_LINK})
  else()
    set(scope INTERFACE)
    add_library(${target} INTERFACE)
  endif()
  add_library(tarnkit::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  target_compile_features(${target} ${scope} cxx_std_20)
  target_include_directories(${target} ${scope}
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
  target_link_libraries(${target} ${scope} ${room_LINK})
  set(TARNKIT_TARGETS ${TARNKIT_TARGETS} ${target} PARENT_SCOPE)
endfunction()

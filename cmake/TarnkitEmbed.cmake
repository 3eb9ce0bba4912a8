# Files that a program carries within itself: style sheets, scripts, pieces of pages.
#
# tarnkit_embed(TARGET HEADER header NAMESPACE namespace FILES constant=file …)
# Gives the target a source that defines each constant, which the header declares as
# `extern const std::string_view constant;`, as the bytes of its file. Paths are the project's.
#
# The same file is the script that writes the source (cmake -P), so a build needs nothing but CMake.

if(CMAKE_SCRIPT_MODE_FILE)
  set(text "// Made of ${INPUT} by the build.\n#include \"${HEADER}\"\n\n")
  file(READ "${ROOT}/${INPUT}" bytes HEX)
  # An array and no literal: those have limits on their length, and delimiters.
  string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND text
    "namespace ${NAMESPACE} {\n\nnamespace {\n\nconstexpr char kBytes[] = {\n${bytes}};\n\n"
    "}  // namespace\n\n"
    "constinit const std::string_view ${CONSTANT}(kBytes, sizeof kBytes);\n\n"
    "}  // namespace ${NAMESPACE}\n")
  file(WRITE "${OUTPUT}" "${text}")
  return()
endif()

set(TARNKIT_EMBED_SCRIPT "${CMAKE_CURRENT_LIST_FILE}")
function(tarnkit_embed target)
  cmake_parse_arguments(PARSE_ARGV 1 embed "" "HEADER;NAMESPACE" "FILES")
  foreach(entry IN LISTS embed_FILES)
    string(REGEX MATCH "^([A-Za-z]+)=(.+)$" _ "${entry}")
    set(constant "${CMAKE_MATCH_1}")
    set(file "${CMAKE_MATCH_2}")
    set(source "${PROJECT_BINARY_DIR}/embedded/${file}.cpp")
    add_custom_command(OUTPUT "${source}"
      COMMAND "${CMAKE_COMMAND}" "-DROOT=${PROJECT_SOURCE_DIR}" "-DINPUT=${file}"
              "-DOUTPUT=${source}" "-DHEADER=${embed_HEADER}" "-DNAMESPACE=${embed_NAMESPACE}"
              "-DCONSTANT=${constant}" -P "${TARNKIT_EMBED_SCRIPT}"
      DEPENDS "${PROJECT_SOURCE_DIR}/${file}" "${TARNKIT_EMBED_SCRIPT}"
      COMMENT "Embedding ${file}" VERBATIM)
    target_sources(${target} PRIVATE "${source}")
  endforeach()
endfunction()

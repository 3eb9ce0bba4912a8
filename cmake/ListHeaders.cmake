# Prints the public headers, a line each: cmake -P cmake/ListHeaders.cmake
include("${CMAKE_CURRENT_LIST_DIR}/TarnkitHeaders.cmake")
tarnkit_public_headers(headers "${CMAKE_CURRENT_LIST_DIR}/..")
foreach(header IN LISTS headers)
  message("${header}")
endforeach()

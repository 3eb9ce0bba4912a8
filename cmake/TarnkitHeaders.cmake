# Run by the install script, which has no policies of its own.
cmake_minimum_required(VERSION 3.25)

# A header is private when all that it declares stands in namespace tarnkit::detail, unless a public
# header includes it: that is the rule, so there is no list to be kept.

# tarnkit_public_headers(RESULT root): the public headers below root/tarnkit, relative to the root.
function(tarnkit_public_headers result root)
  file(GLOB_RECURSE headers RELATIVE "${root}" "${root}/tarnkit/*.h")
  set(public "")
  foreach(header IN LISTS headers)
    file(READ "${root}/${header}" text)
    string(REGEX REPLACE "//[^\n]*" "" text "${text}")
    # Names that are only announced declare nothing.
    string(REGEX REPLACE "namespace tarnkit {[ \n]*((class|struct) [A-Za-z0-9_]+;[ \n]*)*}" "" text
           "${text}")
    if(text MATCHES "namespace tarnkit {")
      list(APPEND public "${header}")
    endif()
  endforeach()
  set(pending ${public})
  while(pending)
    list(POP_FRONT pending header)
    file(STRINGS "${root}/${header}" lines REGEX "^#include \"tarnkit/")
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" included "${line}")
      if(NOT included IN_LIST public)
        list(APPEND public "${included}")
        list(APPEND pending "${included}")
      endif()
    endforeach()
  endwhile()
  set(${result} ${public} PARENT_SCOPE)
endfunction()

function(tarnkit_install_headers root folder)
  if(NOT IS_ABSOLUTE "${folder}")
    set(folder "${CMAKE_INSTALL_PREFIX}/${folder}")
  endif()
  tarnkit_public_headers(headers "${root}")
  foreach(header IN LISTS headers)
    cmake_path(GET header PARENT_PATH place)
    file(INSTALL "${root}/${header}" DESTINATION "${folder}/${place}")
  endforeach()
endfunction()

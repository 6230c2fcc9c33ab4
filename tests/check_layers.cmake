# The direction of the layers, from the includes of the sources:
#   src/link  includes neither src/core nor a family;
#   src/core  includes no family.
# Every folder under src/ other than link and core is a family.
# Usage: cmake -DSRC=<source dir>/src -P check_layers.cmake
if(NOT SRC)
  message(FATAL_ERROR "SRC is not set")
endif()

file(GLOB children RELATIVE ${SRC} ${SRC}/*)
set(families "")
foreach(c ${children})
  if(IS_DIRECTORY ${SRC}/${c} AND NOT c STREQUAL "link" AND NOT c STREQUAL "core")
    list(APPEND families ${c})
  endif()
endforeach()
if(NOT families)
  message(FATAL_ERROR "no family folders found under ${SRC}")
endif()

set(failures "")
# check(<layer> <folders it must not include>)
function(check layer)
  file(GLOB_RECURSE files ${SRC}/${layer}/*.h ${SRC}/${layer}/*.cpp)
  if(NOT files)
    message(FATAL_ERROR "no sources under ${SRC}/${layer}")
  endif()
  foreach(f ${files})
    file(STRINGS ${f} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^\"]+\"")
    foreach(line ${includes})
      string(REGEX REPLACE "^[^\"]*\"([^\"]+)\".*$" "\\1" path "${line}")
      foreach(forbidden ${ARGN})
        if(path MATCHES "^${forbidden}/")
          file(RELATIVE_PATH rel ${SRC} ${f})
          list(APPEND failures "src/${rel} includes \"${path}\"")
        endif()
      endforeach()
    endforeach()
  endforeach()
  set(failures ${failures} PARENT_SCOPE)
endfunction()

check(link core ${families})
check(core ${families})

if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "includes against the direction of the layers:\n  ${text}")
endif()

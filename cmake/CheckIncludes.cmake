# Compares every project include below src/ with the rooms that a room may include. Run with cmake -P; fails with a list.
# A row: room, then the rooms whose headers it may name besides its own.
cmake_minimum_required(VERSION 3.25)

set(rules
    "base:"
    "control:base"
    "store:base"
    "store/sql:store,control,base"
    "transfer:store,base"
    "plugins/contract:base"
    "ui:base"
    "plugins:plugins/contract,store,ui,base"
    "tree:store,ui,base"
    "netscan/api:base"
    "editors:tree,netscan/api,plugins/contract,store,ui,base"
    "netscan:netscan/api,tree,plugins,store,ui,base"
    "logs:tree,store,ui,base"
    "shell:logs,netscan,netscan/api,editors,tree,plugins,plugins/contract,store,ui,base"
    "service:store,base"
    "service/workers:service,store,plugins/contract,base")

set(rooms)
foreach(rule IN LISTS rules)
  string(REGEX REPLACE ":.*" "" room "${rule}")
  string(REGEX REPLACE ".*:" "" allowed "${rule}")
  string(REPLACE "," ";" allowed "${allowed}")
  list(APPEND rooms "${room}")
  set(allowed_${room} ${allowed} "${room}")
endforeach()

function(room_of path result)
  get_filename_component(folder "${path}" DIRECTORY)
  set(${result} "${folder}" PARENT_SCOPE)
endfunction()

file(GLOB_RECURSE files RELATIVE "${SOURCE_DIR}/src" "${SOURCE_DIR}/src/*.h" "${SOURCE_DIR}/src/*.cpp")
set(faults)
set(count 0)
foreach(file IN LISTS files)
  room_of("${file}" room)
  if(room STREQUAL "apps" OR room MATCHES "^apps/")
    continue()
  endif()
  if(NOT room IN_LIST rooms)
    list(APPEND faults "${file}: the folder is no room of the table")
    continue()
  endif()
  file(STRINGS "${SOURCE_DIR}/src/${file}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<]")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[^\"<]*[\"<]([^\">]+).*" "\\1" header "${line}")
    if(header MATCHES "\\.moc$")
      continue()
    endif()
    if(line MATCHES "include[ \t]*<")
      if(EXISTS "${SOURCE_DIR}/src/${header}" AND NOT IS_DIRECTORY "${SOURCE_DIR}/src/${header}")
        list(APPEND faults "${file}: \"${header}\" is named like a header of the system")
      endif()
      continue()
    endif()
    math(EXPR count "${count}+1")
    if(NOT EXISTS "${SOURCE_DIR}/src/${header}")
      list(APPEND faults "${file}: \"${header}\" is not named from src/")
      continue()
    endif()
    room_of("${header}" target)
    if(NOT target IN_LIST allowed_${room})
      list(APPEND faults "${file}: ${room} must not include ${target} (\"${header}\")")
    endif()
  endforeach()
endforeach()

if(faults)
  list(JOIN faults "\n  " text)
  message(FATAL_ERROR "Includes against the layers:\n  ${text}")
endif()
if(count EQUAL 0)
  message(FATAL_ERROR "No include was looked at: wrong SOURCE_DIR?")
endif()
message(STATUS "${count} includes follow the layers")

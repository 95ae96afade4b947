# Options that every target of the project shares, and the two functions that make its libraries and tests.

add_library(quarl_options INTERFACE)
target_include_directories(quarl_options INTERFACE "${CMAKE_SOURCE_DIR}/src")
target_compile_definitions(quarl_options INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS
                                                   QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
target_compile_options(
  quarl_options
  INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
            $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor>
            $<$<BOOL:${QUARL_WERROR}>:-Werror>)

# quarl_room(NAME SOURCES ... LINK ... [MOC]): the static library quarl_NAME of one folder below src/. MOC where a
# header has Q_OBJECT.
function(quarl_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "MOC" "" "SOURCES;LINK")
  add_library(quarl_${name} STATIC ${room_SOURCES})
  set_target_properties(quarl_${name} PROPERTIES AUTOMOC ${room_MOC})
  target_link_libraries(quarl_${name} PUBLIC quarl_options ${room_LINK})
endfunction()

# quarl_test(NAME SOURCES ... LINK ... [WIDGETS] [TIMEOUT s]): one test program, registered with ctest.
# Programs with WIDGETS run on Qt's offscreen platform.
function(quarl_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "WIDGETS" "TIMEOUT" "SOURCES;LINK")
  add_executable(${name} ${test_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE quarl_options quarl_test_support ${test_LINK})
  target_compile_definitions(${name} PRIVATE QUARL_LAYOUT_DIR="${QUARL_LAYOUT_DIR}" QUARL_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
  add_test(NAME ${name} COMMAND ${name})
  if(NOT test_TIMEOUT)
    set(test_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${test_TIMEOUT})
  if(test_WIDGETS)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
  endif()
endfunction()

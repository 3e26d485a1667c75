# A room is one folder below src/ (an adapter: below src/adapters/), built as one library that sees
# only the rooms it links. src/<room>/ is its include root, and its files lie one folder deeper, in
# src/<room>/<room>/: so "<room>/File.h" is found by those who link the room, and by nobody else.
#
#   tessary_room(<name> [SOURCES file...] [LINKS target...] [PRIVATE_LINKS target...])
#
# For the CMakeLists.txt of the include root. SOURCES lie in the folder <name>; without any, the room
# is made of headers alone. LINKS are what its headers include, PRIVATE_LINKS what only its sources do.
# The target is tessary_<name>.
function(tessary_room name)
  cmake_parse_arguments(PARSE_ARGV 1 ROOM "" "" "SOURCES;LINKS;PRIVATE_LINKS")
  set(target tessary_${name})
  if(ROOM_SOURCES)
    list(TRANSFORM ROOM_SOURCES PREPEND ${name}/)
    add_library(${target} STATIC ${ROOM_SOURCES})
    target_include_directories(${target} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${target} PUBLIC ${ROOM_LINKS} PRIVATE tessary_options ${ROOM_PRIVATE_LINKS})
  else()
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${target} INTERFACE ${ROOM_LINKS})
  endif()
endfunction()

# A room's test program, for the CMakeLists.txt beside its SOURCES; every test is listed by CTest.
#   tessary_test(<name> SOURCES file... LINKS target... [ENVIRONMENT NAME=VALUE...] [PREFIX text])
# The target is <name>_test. PREFIX goes before the names of its tests, where another program has the
# same ones.
function(tessary_test name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "PREFIX" "SOURCES;LINKS;ENVIRONMENT")
  set(target ${name}_test)
  add_executable(${target} ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE ${ARG_LINKS} tessary_test_support tessary_options
    GTest::gmock_main)
  set(properties TIMEOUT 120)
  if(ARG_ENVIRONMENT)
    list(APPEND properties ENVIRONMENT "${ARG_ENVIRONMENT}")
  endif()
  # Listed when CTest runs, not when the program is built: a room whose tests need a library of
  # the sanitizers or a display still builds anywhere.
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${ARG_PREFIX}"
    PROPERTIES ${properties})
endfunction()

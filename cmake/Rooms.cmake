# A room is one folder below src/, built as one library that sees only the rooms it links: each room
# gets an include root of its own that holds nothing but a link to its folder, so that including a
# room which is not linked fails to build.
#
#   tessary_room(<folder> [NAME name] [LINKS target...] [PRIVATE_LINKS target...])
#
# <folder> is relative to src/. The target is tessary_<name>, name being the folder with / as _.
# A folder that holds no .cpp becomes an interface library.
function(tessary_room folder)
  cmake_parse_arguments(ROOM "" "NAME" "LINKS;PRIVATE_LINKS;EXCLUDE" ${ARGN})
  if(NOT ROOM_NAME)
    string(REPLACE "/" "_" ROOM_NAME ${folder})
  endif()
  set(target tessary_${ROOM_NAME})
  set(dir ${CMAKE_SOURCE_DIR}/src/${folder})

  set(root ${CMAKE_BINARY_DIR}/rooms/${ROOM_NAME})
  get_filename_component(parent ${root}/${folder} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${dir} ${root}/${folder} SYMBOLIC)

  file(GLOB sources CONFIGURE_DEPENDS ${dir}/*.cpp)
  list(REMOVE_ITEM sources ${ROOM_EXCLUDE})
  if(sources)
    add_library(${target} STATIC ${sources})
    target_include_directories(${target} PUBLIC ${root})
    target_link_libraries(${target} PUBLIC ${ROOM_LINKS} PRIVATE tessary_options ${ROOM_PRIVATE_LINKS})
  else()
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${root})
    target_link_libraries(${target} INTERFACE ${ROOM_LINKS})
  endif()
endfunction()

# One test program a room: tests/<folder>/*_test.cpp, every test listed by CTest.
#   tessary_test(<folder> LINKS target... [LABELS label...])
function(tessary_test folder)
  cmake_parse_arguments(ARG "" "" "LINKS;LABELS;ENVIRONMENT" ${ARGN})
  string(REPLACE "/" "_" name ${folder})
  set(target ${name}_test)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE ${ARG_LINKS} tessary_test_support tessary_options
    GTest::gmock_main)
  set(properties TIMEOUT 120)
  if(ARG_LABELS)
    list(APPEND properties LABELS ${ARG_LABELS})
  endif()
  if(ARG_ENVIRONMENT)
    list(APPEND properties ENVIRONMENT "${ARG_ENVIRONMENT}")
  endif()
  # Listed when CTest runs, not when the program is built: a room whose tests need a library of
  # the sanitizers or a display still builds anywhere.
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST PROPERTIES ${properties})
endfunction()

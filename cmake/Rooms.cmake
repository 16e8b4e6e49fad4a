# nomely_room(<name> FOLDERS <dir>... [LINK <public lib>...] [PRIVATE <lib>...] [PRECOMPILE <header>...])
# One static library per room, alias nomely::<name>. Its link line holds only rooms of lower
# floors, so that an include from above fails to link (and tools/lint says it earlier).
function(nomely_room name)
  cmake_parse_arguments(ROOM "" "" "FOLDERS;LINK;PRIVATE;PRECOMPILE" ${ARGN})
  list(TRANSFORM ROOM_FOLDERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  list(TRANSFORM ROOM_FOLDERS APPEND /*.cpp OUTPUT_VARIABLE sources)
  list(TRANSFORM ROOM_FOLDERS APPEND /*.h OUTPUT_VARIABLE headers)
  file(GLOB_RECURSE files CONFIGURE_DEPENDS ${sources} ${headers})
  list(FILTER files EXCLUDE REGEX "/main\\.cpp$")
  add_library(nomely_${name} STATIC ${files})
  add_library(nomely::${name} ALIAS nomely_${name})
  target_link_libraries(nomely_${name} PUBLIC nomely_options ${ROOM_LINK} PRIVATE ${ROOM_PRIVATE})
  nomely_precompile(${name} "${ROOM_PRECOMPILE}")
endfunction()

# Headers that nearly every source includes, read once for all rooms but those that name more. The
# library is empty: defining nothing, its precompiled header fits every room's definitions.
set(NOMELY_USUAL_HEADERS <algorithm> <chrono> <cstdint> <filesystem> <functional> <map> <memory>
  <mutex> <optional> <set> <string> <string_view> <thread> <variant> <vector> <fmt/format.h>)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/precompiled.cpp CONTENT "")
add_library(nomely_precompiled OBJECT ${CMAKE_BINARY_DIR}/precompiled.cpp)
target_link_libraries(nomely_precompiled PRIVATE nomely_options fmt::fmt)
target_precompile_headers(nomely_precompiled PRIVATE ${NOMELY_USUAL_HEADERS})

function(nomely_precompile name more)
  if(more)
    target_precompile_headers(nomely_${name} PRIVATE ${NOMELY_USUAL_HEADERS} ${more})
  else()
    target_precompile_headers(nomely_${name} REUSE_FROM nomely_precompiled)
  endif()
endfunction()

# nomely_tests(<name> FOLDER <dir> [WITHOUT <regex>] LINK <lib>...): one test program per room, every
# case known to ctest by its own name.
function(nomely_tests name)
  cmake_parse_arguments(TESTS "" "FOLDER;WITHOUT" "LINK" ${ARGN})
  file(GLOB_RECURSE files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${TESTS_FOLDER}/*.cpp)
  if(TESTS_WITHOUT)
    list(FILTER files EXCLUDE REGEX ${TESTS_WITHOUT})
  endif()
  # Paths of this checkout stand in a file of their own, so that a compiler cache serves every other
  # file of tests in all checkouts.
  set(paths ${CMAKE_CURRENT_BINARY_DIR}/${name}_paths.cpp)
  file(GENERATE OUTPUT ${paths} CONTENT "#include \"Support/TestPaths.h\"

const std::string nomely::test::TestPaths::fixtures =
    \"${CMAKE_CURRENT_SOURCE_DIR}/${TESTS_FOLDER}/fixtures\";
const std::string nomely::test::TestPaths::nomely = \"$<TARGET_FILE:nomely>\";
")
  add_executable(nomely_${name}_tests ${files} ${paths})
  target_link_libraries(nomely_${name}_tests PRIVATE nomely_test_support ${TESTS_LINK} GTest::gmock_main
    nomely_quick_options)
  target_precompile_headers(nomely_${name}_tests PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
  gtest_discover_tests(nomely_${name}_tests DISCOVERY_MODE PRE_TEST
    TEST_PREFIX ${name}/ PROPERTIES TIMEOUT 600 ENVIRONMENT "TZ=Asia/Shanghai;LC_ALL=C.UTF-8")
endfunction()

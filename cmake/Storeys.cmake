# Which part may see which is kept by the include path: every target exports one include folder that
# holds nothing but a link to its own source folder, so a header is visible only to those who link the
# target that owns it. There is no include path to the top of the tree.

# tallyforge_library(NAME FOLDER SOURCES ... [LINKS ...] [PRIVATE_LINKS ...])
#   Headers are included as "FOLDER/Header.h"; FOLDER is relative to the list file's own root:
#   platform/foundation is "foundation", settings is "settings".
function(tallyforge_library name folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  tallyforge_own_include(${name} ${folder} ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE tallyforge_warnings ${ARG_PRIVATE_LINKS})
endfunction()

function(tallyforge_own_include name folder source)
  set(root ${CMAKE_BINARY_DIR}/include/${name})
  get_filename_component(parent ${root}/${folder} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${source} ${root}/${folder} SYMBOLIC)
  target_include_directories(${name} PUBLIC ${root})
endfunction()

# tallyforge_test(NAME SOURCES ... LINKS ...): one GoogleTest program, run whole by ctest.
function(tallyforge_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE tallyforge_warnings ${ARG_LINKS} GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE
    TALLYFORGE_BIN="$<TARGET_FILE_DIR:${name}>" TALLYFORGE_RESOURCES="${CMAKE_SOURCE_DIR}/resources"
    TALLYFORGE_FIXTURES="${CMAKE_SOURCE_DIR}/../shared/fixtures" TALLYFORGE_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}")
  add_test(NAME ${name} COMMAND ${name})
  if(ARG_TIMEOUT)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
  endif()
endfunction()

# tallyforge_apart(SOURCES...): these share a name with another file of their target, each for itself. Where a target's
# files are compiled together (the builds that only check), they are compiled alone.
function(tallyforge_apart)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

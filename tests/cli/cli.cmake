# The command as its users run it.
find_package(Python3 COMPONENTS Interpreter QUIET)
if(NOT TARGET zantrel_command OR NOT Python3_FOUND)
  return()
endif()
add_test(NAME cli COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/cli/cli_test.py
  ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:zantrel_command>)
set_tests_properties(cli PROPERTIES LABELS unit TIMEOUT 900 ENVIRONMENT LC_ALL=C.UTF-8)
if(CMAKE_CROSSCOMPILING)
  set_tests_properties(cli PROPERTIES FIXTURES_REQUIRED wine)
endif()

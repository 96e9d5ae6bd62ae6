# Checks of the source tree and tests of the tools that make and check it. They need Python only.
find_package(Python3 COMPONENTS Interpreter QUIET)
if(NOT Python3_FOUND)
  message(STATUS "Python 3 is missing: the checks of the source tree are left out")
  return()
endif()

function(zantrel_check name)
  add_test(NAME check_${name} COMMAND ${Python3_EXECUTABLE} -B ${ARGN}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(check_${name} PROPERTIES LABELS check TIMEOUT 300)
endfunction()

# tools/check_<name>.py: each takes the source folder from where it stands.
file(GLOB checks CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/check_*.py)
foreach(check IN LISTS checks)
  get_filename_component(name ${check} NAME_WE)
  string(REPLACE check_ "" name ${name})
  if(name STREQUAL headers)
    zantrel_check(${name} ${check} --compiler ${CMAKE_CXX_COMPILER})
  elseif(name STREQUAL sizes)
    zantrel_check(${name} ${check} --library $<TARGET_FILE:zantrel>)
  elseif(name STREQUAL readme)
    if(TARGET example_readme)
      zantrel_check(${name} ${check} --program $<TARGET_FILE:example_readme>)
    endif()
  else()
    zantrel_check(${name} ${check})
  endif()
endforeach()

# tests/tools/<stem>_test.py: unit tests of the tools themselves.
file(GLOB tool_tests CONFIGURE_DEPENDS tools/*_test.py)
foreach(test IN LISTS tool_tests)
  get_filename_component(name ${test} NAME_WE)
  add_test(NAME tools_${name} COMMAND ${Python3_EXECUTABLE} -B ${test}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  set_tests_properties(tools_${name} PROPERTIES LABELS check TIMEOUT 300)
endforeach()

# The library as its users get it: installed, static and shared, found in three ways. Included by
# tests/CMakeLists.txt; each step below is one CTest entry that runs this file's neighbour run.cmake.
if(BUILD_SHARED_LIBS)
  return()  # the tests below need the static library of this build
endif()

function(zantrel_package_test name)
  cmake_parse_arguments(arg "" "SETUP" "NEEDS;SET" ${ARGN})
  set(definitions)
  foreach(definition IN LISTS arg_SET)
    list(APPEND definitions -D ${definition})
  endforeach()
  add_test(NAME package_${name} COMMAND ${CMAKE_COMMAND}
    -D SOURCE=${PROJECT_SOURCE_DIR} -D BUILD=${PROJECT_BINARY_DIR} -D GENERATOR=${CMAKE_GENERATOR}
    -D COMPILER=${CMAKE_CXX_COMPILER}
    -D BUILD_TYPE=${CMAKE_BUILD_TYPE} -D WERROR=${ZANTREL_WERROR} ${definitions}
    -P ${CMAKE_CURRENT_SOURCE_DIR}/consumer/run.cmake)
  set_tests_properties(package_${name} PROPERTIES LABELS package TIMEOUT 1800)
  if(arg_SETUP)
    set_tests_properties(package_${name} PROPERTIES FIXTURES_SETUP ${arg_SETUP})
  endif()
  if(arg_NEEDS)
    set_tests_properties(package_${name} PROPERTIES FIXTURES_REQUIRED "${arg_NEEDS}")
  endif()
endfunction()

foreach(kind static shared)
  zantrel_package_test(install_${kind} SETUP ${kind}_tree SET STEP=install KIND=${kind})
  zantrel_package_test(find_package_${kind} NEEDS ${kind}_tree SET STEP=find_package KIND=${kind})
  zantrel_package_test(pkg_config_${kind} NEEDS ${kind}_tree SET STEP=pkg_config KIND=${kind})
endforeach()
zantrel_package_test(exports NEEDS shared_tree SET STEP=exports KIND=shared)
zantrel_package_test(subdirectory SET STEP=subdirectory KIND=static)

# cmake -P: one STEP with the KIND (static, shared) of library. Installed trees and builds stand
# beside the build folder BUILD, as deep as it is, so that a compiler cache recognises the files.
cmake_minimum_required(VERSION 3.25)

set(tree ${BUILD}-package/${KIND})
set(ENV{LD_LIBRARY_PATH} ${tree}/lib)
set(ENV{PKG_CONFIG_PATH} ${tree}/lib/pkgconfig)
# As the library's own build does (cmake/ZantrelCompiler.cmake), so that the cache is one.
set(ENV{CCACHE_BASEDIR} ${SOURCE})
set(ENV{CCACHE_NOHASHDIR} 1)
find_program(CCACHE ccache)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Configures and builds `source` in `folder` with the compiler of the build that is tested.
function(build source folder)
  run(${CMAKE_COMMAND} -S ${source} -B ${folder} -G ${GENERATOR} -D CMAKE_CXX_COMPILER=${COMPILER}
    -D CMAKE_BUILD_TYPE=${BUILD_TYPE} ${ARGN})
  run(${CMAKE_COMMAND} --build ${folder} --parallel 2)
endfunction()

function(expect_output program)
  execute_process(COMMAND ${program} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
  if(NOT output MATCHES "^Zantrel [0-9.]+ converts")
    message(FATAL_ERROR "unexpected output: ${output}")
  endif()
  message(STATUS "${output}")
endfunction()

if(STEP STREQUAL "install")
  set(folder ${BUILD})
  if(KIND STREQUAL "shared")
    set(folder ${BUILD}-shared)
    build(${SOURCE} ${folder} -D BUILD_SHARED_LIBS=ON -D ZANTREL_WERROR=${WERROR}
      -D ZANTREL_BUILD_TESTS=OFF -D ZANTREL_BUILD_EXAMPLES=OFF -D CMAKE_INSTALL_LIBDIR=lib)
  endif()
  # Moved after the installation: an installed tree must not remember where it was made.
  file(REMOVE_RECURSE ${tree} ${tree}.made)
  run(${CMAKE_COMMAND} --install ${folder} --prefix ${tree}.made)
  file(RENAME ${tree}.made ${tree})

elseif(STEP STREQUAL "find_package")
  set(folder ${BUILD}-package/find_package_${KIND})
  file(REMOVE_RECURSE ${folder})
  build(${SOURCE}/tests/consumer/find_package ${folder} -D CMAKE_PREFIX_PATH=${tree})
  expect_output(${folder}/consumer)

elseif(STEP STREQUAL "pkg_config")
  set(folder ${BUILD}-package/pkg_config_${KIND})
  file(MAKE_DIRECTORY ${folder})
  run(${SOURCE}/tests/consumer/pkg_config/build.sh ${COMPILER} ${folder})
  expect_output(${folder}/consumer)

elseif(STEP STREQUAL "subdirectory")
  set(folder ${BUILD}-subdirectory)
  set(launcher)
  if(CCACHE)
    set(launcher -D CMAKE_CXX_COMPILER_LAUNCHER=${CCACHE})
  endif()
  build(${SOURCE}/tests/consumer/subdirectory ${folder} -D ZANTREL_WERROR=${WERROR} ${launcher})
  expect_output(${folder}/consumer)

elseif(STEP STREQUAL "exports")
  # Only the public classes may be visible, and the file must carry its ABI version.
  set(library ${tree}/lib/libzantrel.so)
  execute_process(COMMAND nm -D --defined-only ${library} OUTPUT_VARIABLE symbols
    COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n]*7zantrel[^\n]*" internal "${symbols}")
  string(REGEX MATCHALL "_ZN[K]?7Zantrel[^\n]*" public "${symbols}")
  list(LENGTH public count)
  if(internal)
    message(FATAL_ERROR "internal names are exported: ${internal}")
  elseif(count LESS 20)
    message(FATAL_ERROR "only ${count} public names are exported")
  endif()
  execute_process(COMMAND readelf -d ${library} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
  if(NOT dynamic MATCHES "SONAME[^\n]*\\[libzantrel\\.so\\.[0-9]+\\]")
    message(FATAL_ERROR "the shared library has no SONAME")
  endif()

else()
  message(FATAL_ERROR "unknown step ${STEP}")
endif()

# Installs the library, its headers, and what find_package(Zantrel) and pkg-config need to find it.
# The command installs itself (cli/CMakeLists.txt).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS zantrel EXPORT ZantrelTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/zantrel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Zantrel)
install(EXPORT ZantrelTargets NAMESPACE Zantrel:: DESTINATION ${package_folder})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ZantrelConfig.cmake.in
  ${PROJECT_BINARY_DIR}/ZantrelConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZantrelConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZantrelConfig.cmake
  ${PROJECT_BINARY_DIR}/ZantrelConfigVersion.cmake DESTINATION ${package_folder})

# zantrel.pc finds its prefix from its own place, so an installed tree may be moved. A static library
# leaves its own needs to the program that links it: they stand in Libs then, not in Libs.private.
file(RELATIVE_PATH pc_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
set(pc_needs "-pthread")
if(WIN32)
  string(APPEND pc_needs " -lbcrypt")
endif()
if(BUILD_SHARED_LIBS)
  set(pc_libs_private "${pc_needs}")
  set(pc_libs "")
  set(pc_cflags "")
else()
  set(pc_libs_private "")
  set(pc_libs " -lstdc++ ${pc_needs}")
  set(pc_cflags "")
  if(WIN32)
    set(pc_cflags " -DZANTREL_STATIC")
  endif()
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/zantrel.pc.in ${PROJECT_BINARY_DIR}/zantrel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zantrel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

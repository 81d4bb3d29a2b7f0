# Installs the header, both libraries, a CMake package (kvtvc::kvtvc) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(FILES include/kvtvc.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS kvtvc kvtvc_static EXPORT kvtvcTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT kvtvcTargets NAMESPACE kvtvc:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kvtvc)

configure_package_config_file(cmake/kvtvcConfig.cmake.in
  ${PROJECT_BINARY_DIR}/kvtvcConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kvtvc)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kvtvcConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kvtvcConfig.cmake ${PROJECT_BINARY_DIR}/kvtvcConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kvtvc)

# The .pc file finds its prefix relative to itself, so an installed tree can be moved.
file(RELATIVE_PATH KVT_PC_UP "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" KVT_PC_UP "${KVT_PC_UP}")
configure_file(cmake/kvtvc.pc.in ${PROJECT_BINARY_DIR}/kvtvc.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kvtvc.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

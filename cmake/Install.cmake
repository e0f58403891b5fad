# What a client finds: find_package(TarnelLib) with the target TarnelLib::TarnelLib, and pkg-config's "tarnel".
include(CMakePackageConfigHelpers)

install(TARGETS TarnelLib EXPORT TarnelLibTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/tarnel ${CMAKE_BINARY_DIR}/include/tarnel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TarnelLibTargets FILE TarnelLibConfig.cmake NAMESPACE TarnelLib::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnelLib)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TarnelLibConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TarnelLibConfigVersion.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnelLib)

# The library's directory may have several levels, as Debian's for /usr has.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    OUTPUT_VARIABLE prefixFromPkgConfig)
configure_file(cmake/tarnel.pc.in tarnel.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tarnel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# What a client finds: find_package(TarnelLib) with the target TarnelLib::TarnelLib, and pkg-config's "tarnel".
include(CMakePackageConfigHelpers)

install(TARGETS TarnelLib EXPORT TarnelLibTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/tarnel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TarnelLibTargets FILE TarnelLibConfig.cmake NAMESPACE TarnelLib::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnelLib)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TarnelLibConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TarnelLibConfigVersion.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TarnelLib)

# Found from where the file lies, so that an installed tree can be moved; the library folder may have one level or two.
file(RELATIVE_PATH TARNEL_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/tarnel.pc.in tarnel.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tarnel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

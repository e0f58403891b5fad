# What a client finds: find_package(TarnelLib) with the target TarnelLib::TarnelLib, and pkg-config's "tarnel". Each
# component is a Debian package of its own, see Packages.cmake.
include(CMakePackageConfigHelpers)
set(configDir ${CMAKE_INSTALL_LIBDIR}/cmake/TarnelLib)

install(TARGETS TarnelLib EXPORT TarnelLibTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY include/tarnel ${CMAKE_BINARY_DIR}/include/tarnel DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development)
install(EXPORT TarnelLibTargets FILE TarnelLibConfig.cmake NAMESPACE TarnelLib:: DESTINATION ${configDir}
    COMPONENT development)

# Before 1.0 a minor version may break what the one before it promised: 0.1 asks for 0.1 alone. Who gives a range, as
# 0.1...<1, has chosen.
foreach(compatibility SameMinorVersion AnyNewerVersion)
    write_basic_package_version_file(${CMAKE_BINARY_DIR}/${compatibility}.cmake COMPATIBILITY ${compatibility})
    file(READ ${CMAKE_BINARY_DIR}/${compatibility}.cmake ${compatibility})
endforeach()
file(CONFIGURE OUTPUT TarnelLibConfigVersion.cmake @ONLY CONTENT [[
if(PACKAGE_FIND_VERSION_RANGE)
@AnyNewerVersion@
else()
@SameMinorVersion@
endif()
]])
install(FILES ${CMAKE_BINARY_DIR}/TarnelLibConfigVersion.cmake DESTINATION ${configDir} COMPONENT development)

# The library's directory may have several levels, as Debian's for /usr has.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    OUTPUT_VARIABLE prefixFromPkgConfig)
configure_file(cmake/tarnel.pc.in tarnel.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tarnel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Takes away what the last installation has put where.
add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -DBUILD=${CMAKE_BINARY_DIR} -P ${CMAKE_CURRENT_SOURCE_DIR}/cmake/Uninstall.cmake)

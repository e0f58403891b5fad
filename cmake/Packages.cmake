# The Debian packages: one for each component of the installation, made by CPack. They are for /usr.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGE_CONTACT "The maintainers of TarnelLib <maintainers@tarnellib.invalid>" CACHE STRING
    "Who answers for the packages, as Debian writes it")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE tarnel)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(library libtarnel${soVersion})

# The time is that of SOURCE_DATE_EPOCH, if it is set.
string(TIMESTAMP changed "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(made ${PROJECT_BINARY_DIR}/debian)
foreach(file changelog shlibs runtime.overrides python.overrides)
    configure_file(cmake/debian/${file}.in ${made}/${file} @ONLY)
endforeach()
configure_file(CHANGELOG.md ${made}/NEWS COPYONLY)
execute_process(COMMAND gzip -9nf changelog NEWS WORKING_DIRECTORY ${made} COMMAND_ERROR_IS_FATAL ANY)

# tarnel_package(<component> NAME <package> SECTION <section> SUMMARY <line> DESCRIPTION <text>
#                [ARCHITECTURE all] [DEPENDS <packages>] [CONTROL <files>])
# Its file <component>.overrides says what lintian takes for wrong and is not.
macro(tarnel_package component)
    cmake_parse_arguments(package "" "NAME;SECTION;SUMMARY;DESCRIPTION;ARCHITECTURE;DEPENDS" "CONTROL" ${ARGN})
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package_NAME})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${package_SECTION})
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${package_DEPENDS}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_ARCHITECTURE "${package_ARCHITECTURE}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${package_CONTROL}")
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${package_SUMMARY}\n${package_DESCRIPTION}")
    install(FILES cmake/debian/copyright ${made}/changelog.gz ${made}/NEWS.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_NAME} COMPONENT ${component})
    if(EXISTS ${made}/${component}.overrides)
        install(FILES ${made}/${component}.overrides RENAME ${package_NAME}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component})
    endif()
endmacro()

set(about "TarnelLib keeps what a monitoring centre's client program knows on the
client's own disk: guarded sites, their alarm devices, operators, contracts
and the history of events.")
# A trigger calls ldconfig. CPack would write scripts for that, but where it is given some: of that name, and none.
tarnel_package(runtime NAME ${library} SECTION libs DEPENDS "libqt5sql5-sqlite"
    CONTROL ${made}/shlibs ${PROJECT_SOURCE_DIR}/cmake/debian/triggers ${made}/none/postinst ${made}/none/postrm
    SUMMARY "local cache of a monitoring and alarm-response service"
    DESCRIPTION "${about}\n.\nThis is the shared library.")
tarnel_package(development NAME libtarnel-dev SECTION libdevel DEPENDS "${library} (= ${PROJECT_VERSION})"
    SUMMARY "local cache of a monitoring service (development files)"
    DESCRIPTION "${about}\n.\nThese are the headers for C and C++, what CMake and pkg-config need, and\nexamples.")
if(pythonPackages)
    tarnel_package(python NAME python3-tarnel SECTION python
        DEPENDS "${library} (= ${PROJECT_VERSION}), ${pythonPackages}"
        CONTROL ${PROJECT_SOURCE_DIR}/cmake/debian/postinst ${PROJECT_SOURCE_DIR}/cmake/debian/prerm
        SUMMARY "local cache of a monitoring service (Python 3)"
        DESCRIPTION "${about}\n.\nThis is the package for Python 3, with typed records.")
endif()
if(DOXYGEN AND DOXYGEN_AWESOME)
    tarnel_package(doc NAME tarnel-doc SECTION doc ARCHITECTURE all
        SUMMARY "local cache of a monitoring service (documentation)"
        DESCRIPTION "${about}\n.\nThis is the guide for developers of clients, the reference of the\nfunctions, and JSON Schemas of the requests.")
endif()
if(TARNEL_TOOLS)
    tarnel_package(tools NAME tarnel-tools SECTION utils DEPENDS "${library} (= ${PROJECT_VERSION})"
        SUMMARY "local cache of a monitoring service (support tool)"
        DESCRIPTION "${about}\n.\nThis is the command tarnel, which says what is in a cache, and why.")
endif()

include(CPack)

get_cmake_property(components COMPONENTS)
foreach(component IN LISTS components)
    string(TOUPPER ${component} upper)
    if(NOT CPACK_DEBIAN_${upper}_PACKAGE_NAME)
        message(FATAL_ERROR "Something is installed as component '${component}', which belongs to no package")
    endif()
endforeach()

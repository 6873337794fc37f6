# What `cmake --install` lays down: the library, its headers, and the package that find_package(qxbase) reads.
# SPDX-License-Identifier: see LICENSE

include(CMakePackageConfigHelpers)

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/qxbase)

install(TARGETS qxbase
    EXPORT qxbase
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxbase
)
install(EXPORT qxbase NAMESPACE qxbase:: DESTINATION ${package_directory} FILE qxbaseTargets.cmake)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/qxbaseConfig.cmake.in ${PROJECT_BINARY_DIR}/qxbaseConfig.cmake
    INSTALL_DESTINATION ${package_directory}
)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qxbaseConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qxbaseConfig.cmake ${PROJECT_BINARY_DIR}/qxbaseConfigVersion.cmake
    DESTINATION ${package_directory}
)

# What a consumer gets: the component as a package, find_package(tarnwick). `cmake --install DIR --component library`
# installs it alone.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tarnwick)

install(DIRECTORY include/tarnwick DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT library)
install(TARGETS tarnwick tarnwick_text EXPORT tarnwick COMPONENT library)
install(EXPORT tarnwick NAMESPACE tarnwick:: FILE tarnwick-targets.cmake DESTINATION ${package_dir} COMPONENT library)
configure_package_config_file(cmake/tarnwick-config.cmake.in tarnwick-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(tarnwick-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tarnwick-config.cmake ${PROJECT_BINARY_DIR}/tarnwick-config-version.cmake
        DESTINATION ${package_dir} COMPONENT library)

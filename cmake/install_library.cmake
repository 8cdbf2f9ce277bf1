# Installs the library, its public headers, the CMake package and the pkg-config file.
# Everything is relocatable: both packages find the library relative to their own location.

include(CMakePackageConfigHelpers)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/VistaTrimEngine)
set(pkgConfigDir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS VistaTrimEngine EXPORT VistaTrimEngineTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vistaTrim DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT VistaTrimEngineTargets NAMESPACE VistaTrimEngine:: DESTINATION ${packageDir})

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/VistaTrimEngineConfig.cmake.in
    ${PROJECT_BINARY_DIR}/VistaTrimEngineConfig.cmake
    INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VistaTrimEngineConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/VistaTrimEngineConfig.cmake
    ${PROJECT_BINARY_DIR}/VistaTrimEngineConfigVersion.cmake
    DESTINATION ${packageDir})

file(RELATIVE_PATH PC_PREFIX_FROM_PCDIR
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" PC_PREFIX_FROM_PCDIR "${PC_PREFIX_FROM_PCDIR}")
set(linearAlgebraPackages "")
if(VISTATRIM_LINEAR_ALGEBRA STREQUAL "blas")
    set(linearAlgebraPackages "openblas, lapacke")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/VistaTrimEngine.pc.in
    ${PROJECT_BINARY_DIR}/VistaTrimEngine.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/VistaTrimEngine.pc DESTINATION ${pkgConfigDir})

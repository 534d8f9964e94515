include(CMakePackageConfigHelpers)

install(TARGETS vortutil hsl vortqthost
    EXPORT VortUtilTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_BINARY_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(VORT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VortUtil)
install(EXPORT VortUtilTargets NAMESPACE Vort:: DESTINATION ${VORT_CMAKE_DIR})

configure_package_config_file(cmake/VortUtilConfig.cmake.in
    ${PROJECT_BINARY_DIR}/VortUtilConfig.cmake
    INSTALL_DESTINATION ${VORT_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VortUtilConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/VortUtilConfig.cmake
    ${PROJECT_BINARY_DIR}/VortUtilConfigVersion.cmake
    DESTINATION ${VORT_CMAKE_DIR})

configure_file(cmake/vortutil.pc.in ${PROJECT_BINARY_DIR}/vortutil.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vortutil.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

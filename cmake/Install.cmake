# What a packager and a consumer get: headers, library, pkg-config file and CMake package. On the
# desk the library links the desk platform, which is installed beside it.
include(CMakePackageConfigHelpers)

set(VELK_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/velkperfctrl)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
install(TARGETS velkperfctrl EXPORT velkperfctrlTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(VELK_DESK)
    set_target_properties(velkperfctrl PROPERTIES INSTALL_RPATH "$ORIGIN")
    file(RELATIVE_PATH VELK_LIBDIR_FROM_BINDIR
         ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(velk-replay velk-tuning PROPERTIES
        INSTALL_RPATH "$ORIGIN/${VELK_LIBDIR_FROM_BINDIR}"
        INSTALL_RPATH_USE_LINK_PATH ON)
endif()

install(EXPORT velkperfctrlTargets NAMESPACE velkperfctrl:: DESTINATION ${VELK_PACKAGE_DIR})
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/velkperfctrlConfig.cmake.in
    ${PROJECT_BINARY_DIR}/velkperfctrlConfig.cmake
    INSTALL_DESTINATION ${VELK_PACKAGE_DIR})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/velkperfctrlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velkperfctrlConfig.cmake
              ${PROJECT_BINARY_DIR}/velkperfctrlConfigVersion.cmake
        DESTINATION ${VELK_PACKAGE_DIR})

# Relative, so that the folder may be moved.
file(RELATIVE_PATH VELK_PC_PREFIX
     ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/velkperfctrl.pc.in
               ${PROJECT_BINARY_DIR}/velkperfctrl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velkperfctrl.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

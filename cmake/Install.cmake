# What is installed: headers, library, pkg-config files and CMake package; of the desk, to which the
# library is linked here, also its headers, the tools with manual pages and completion, samples and
# schemas. The installation can be moved to any folder.
include(CMakePackageConfigHelpers)

set(VELK_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/velkperfctrl)
set(VELK_SHARED_DIR ${CMAKE_INSTALL_DATADIR}/velkperfctrl)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
install(TARGETS velkperfctrl EXPORT velkperfctrlTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

install(EXPORT velkperfctrlTargets NAMESPACE velkperfctrl:: DESTINATION ${VELK_PACKAGE_DIR})
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/velkperfctrlConfig.cmake.in
    ${PROJECT_BINARY_DIR}/velkperfctrlConfig.cmake
    INSTALL_DESTINATION ${VELK_PACKAGE_DIR}
    PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/velkperfctrlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velkperfctrlConfig.cmake
              ${PROJECT_BINARY_DIR}/velkperfctrlConfigVersion.cmake
        DESTINATION ${VELK_PACKAGE_DIR})

# Installs NAME.pc. Its paths are relative, so that the folder can be moved. Outside of the system's
# library folders, programs get a run path to find the library.
function(velk_install_pkg_config name)
    file(RELATIVE_PATH VELK_PC_PREFIX
         ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    foreach(place private system)
        set(VELK_PC_RUN_PATH "")
        if(place STREQUAL private)
            set(VELK_PC_RUN_PATH " -Wl,-rpath,\${libdir}")
        endif()
        configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in
                       ${PROJECT_BINARY_DIR}/pkgconfig/${place}/${name}.pc @ONLY)
    endforeach()
    install(CODE "
        set(place private)
        if(CMAKE_INSTALL_PREFIX MATCHES \"/usr/?$\")
            set(place system)
        endif()
        file(INSTALL \"${PROJECT_BINARY_DIR}/pkgconfig/\${place}/${name}.pc\"
             DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig\")")
endfunction()

velk_install_pkg_config(velkperfctrl)

if(VELK_DESK)
    set(VELK_TOOLS velk-node-check velk-replay velk-run velk-tuning)
    set(VELK_DESK_LIBRARIES velkdesk velklive velknode velkrecord)
    file(RELATIVE_PATH VELK_LIBDIR_FROM_BINDIR
         ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    get_directory_property(VELK_AOSP_LIBRARY_DIR DIRECTORY host DEFINITION VELK_AOSP_LIBRARY_DIR)
    set_target_properties(${VELK_TOOLS} PROPERTIES
        INSTALL_RPATH "$ORIGIN/${VELK_LIBDIR_FROM_BINDIR};${VELK_AOSP_LIBRARY_DIR}")
    set_target_properties(${VELK_DESK_LIBRARIES} PROPERTIES
        INSTALL_RPATH "$ORIGIN;${VELK_AOSP_LIBRARY_DIR}")
    set_target_properties(velkperfctrl PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${VELK_TOOLS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT desk)
    install(TARGETS ${VELK_DESK_LIBRARIES}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT desk)

    # Headers for programs that set up the desk themselves.
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/clock ${PROJECT_SOURCE_DIR}/host/driver
                      ${PROJECT_SOURCE_DIR}/host/log ${PROJECT_SOURCE_DIR}/host/trace
                      ${PROJECT_SOURCE_DIR}/host/tuning ${PROJECT_SOURCE_DIR}/host/ulogger
                      ${PROJECT_SOURCE_DIR}/platform/
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velkdesk COMPONENT desk
            FILES_MATCHING PATTERN "*.h"
            REGEX "/tuning/[^/]*Json[^/]*$|/(DriverSession|DriverTotals|OpenDescriptors|RecordCopy|TaskRuns)\\.h$" EXCLUDE)
    install(FILES ${PROJECT_SOURCE_DIR}/src/foundation/CommandField.h
                  ${PROJECT_SOURCE_DIR}/src/foundation/CommandRecords.h
                  ${PROJECT_SOURCE_DIR}/src/foundation/CommandTable.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velkdesk/foundation COMPONENT desk)
    velk_install_pkg_config(velkdesk)

    install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples ${PROJECT_SOURCE_DIR}/schema
            DESTINATION ${VELK_SHARED_DIR} COMPONENT desk)

    install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples
            DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT desk PATTERN Doxyfile EXCLUDE)
    install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT desk)

    foreach(tool IN LISTS VELK_TOOLS)
        install(FILES ${PROJECT_SOURCE_DIR}/cmake/completion.bash
                DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
                RENAME ${tool} COMPONENT desk)
    endforeach()
    include(cmake/ManPages.cmake)
    velk_install_man_pages(${VELK_TOOLS})

    # Builds all that is installed and nothing else, for those who need no tests.
    add_custom_target(installed DEPENDS velkperfctrl ${VELK_DESK_LIBRARIES} ${VELK_TOOLS})
    if(TARGET velk_man_pages)
        add_dependencies(installed velk_man_pages)
    endif()
endif()

# Changes an installation in /usr into the layout that a Debian package needs. cpack runs this in
# the folder that it packs, before it packs it.
set(usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr)
set(documents ${usr}/share/doc/${CPACK_PACKAGE_NAME})

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The linker searches /usr/lib itself. AOSP's libraries are found from there.
function(settle_run_path file)
    execute_process(COMMAND patchelf --print-rpath ${file}
                    OUTPUT_VARIABLE run_path COMMAND_ERROR_IS_FATAL ANY)
    if(run_path MATCHES ${CPACK_VELK_AOSP_LIBRARY_DIR})
        file(RELATIVE_PATH folder ${usr} ${file})
        cmake_path(GET folder PARENT_PATH folder)
        file(RELATIVE_PATH from_file /usr/${folder} ${CPACK_VELK_AOSP_LIBRARY_DIR})
        run(patchelf --set-rpath "$ORIGIN/${from_file}" ${file})
    elseif(run_path MATCHES "ORIGIN")
        run(patchelf --remove-rpath ${file})
    endif()
endfunction()

# The project's own licence, and those of the packages whose code is in the tools.
function(write_copyright)
    set(text "VELKPerfCtrl\n\nCopyright: the authors of VELKPerfCtrl. All rights reserved: the project \
states no licence,\nso ask its maintainers before you pass this package on.\n")
    foreach(package libcli11-dev libfmt-dev libjs-chart.js nlohmann-json3-dev)
        file(READ /usr/share/doc/${package}/copyright terms)
        string(APPEND text "\nThe tools contain code of ${package}, of which its package says:\n\n${terms}")
    endforeach()
    file(WRITE ${documents}/copyright "${text}")
endfunction()

function(write_changelogs)
    configure_file(${CPACK_VELK_SOURCE_DIR}/CHANGELOG.md ${documents}/changelog COPYONLY)
    string(TIMESTAMP time "%a, %d %b %Y %H:%M:%S +0000" UTC)
    set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
    file(WRITE ${documents}/changelog.Debian
         "${CPACK_PACKAGE_NAME} (${version}) unstable; urgency=medium\n\n"
         "  * Packaged as built; changelog.gz says what is new.\n\n"
         " -- ${CPACK_DEBIAN_PACKAGE_MAINTAINER}  ${time}\n")
    run(gzip -9n ${documents}/changelog ${documents}/changelog.Debian)
endfunction()

file(GLOB programs ${usr}/bin/* ${usr}/lib/*.so*)
foreach(file IN LISTS programs)
    if(NOT IS_SYMLINK ${file})
        settle_run_path(${file})
    endif()
endforeach()
write_copyright()
write_changelogs()
file(GLOB pages ${usr}/share/man/man1/*.1)
run(gzip -9n ${pages})
file(CHMOD_RECURSE ${usr}/share
     FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
     DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                           WORLD_READ WORLD_EXECUTE)

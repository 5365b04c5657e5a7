# Removes the maintainer scripts from the packages that cpack has made. They only call ldconfig,
# which the package's trigger does as well, and a root without a shell could not run them.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(folder ${CPACK_TEMPORARY_DIRECTORY}/repacked)
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
    execute_process(COMMAND dpkg-deb --root-owner-group --build ${folder} ${package}
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${folder})
endforeach()

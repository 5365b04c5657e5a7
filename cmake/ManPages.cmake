# Manual pages, generated from the output of --help, so that the two never differ.

# velk_install_man_pages(TOOL...): generates a page for each tool and installs it.
function(velk_install_man_pages)
    if(CMAKE_CROSSCOMPILING OR VELK_SANITIZE)
        message(STATUS "No manual pages: making them needs tools that can be run on this machine")
        return()
    endif()
    find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter)
    set(script ${PROJECT_SOURCE_DIR}/cmake/man-page.py)
    foreach(tool IN LISTS ARGN)
        set(page ${PROJECT_BINARY_DIR}/man/${tool}.1)
        add_custom_command(
            OUTPUT ${page}
            COMMAND ${Python3_EXECUTABLE} ${script} $<TARGET_FILE:${tool}> ${page} ${ARGN}
            DEPENDS ${tool} ${script}
            COMMENT "Making the manual page of ${tool}"
            VERBATIM)
        list(APPEND pages ${page})
    endforeach()
    add_custom_target(velk_man_pages ALL DEPENDS ${pages})
    install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT desk)
endfunction()

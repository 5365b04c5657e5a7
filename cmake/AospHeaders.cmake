# Links to AOSP's packaged headers in a folder of the build. The distribution's own folder is not
# used because it holds more: on Debian 13 its copy of fmt would be found before the desk's.

# velk_link_aosp_headers(FOLDER [HEADER...]): makes FOLDER with links to these headers or folders of
# headers; by default to all that the desk uses.
function(velk_link_aosp_headers folder)
    set(headers ${ARGN})
    if(NOT headers)
        set(headers android/log.h android-base cutils log)
    endif()
    foreach(header IN LISTS headers)
        # Debian 13 has android/log.h directly in /usr/include.
        foreach(place /usr/include/android /usr/include)
            if(EXISTS ${place}/${header})
                cmake_path(GET header PARENT_PATH parent)
                file(MAKE_DIRECTORY ${folder}/${parent})
                file(CREATE_LINK ${place}/${header} ${folder}/${header} SYMBOLIC)
                break()
            endif()
        endforeach()
        if(NOT EXISTS ${folder}/${header})
            message(FATAL_ERROR "There is no ${header} in /usr/include/android or /usr/include; "
                                "'script/setup' installs it")
        endif()
    endforeach()
endfunction()

# AOSP's headers as the distribution packages them, in a folder of the build. That of the distribution
# holds more: Debian 13 has an fmt of AOSP's own in it, which would come before the desk's.

# velk_link_aosp_headers(FOLDER [HEADER...]): links to these headers or folders of headers; without
# any, to all that the desk uses.
function(velk_link_aosp_headers folder)
    set(headers ${ARGN})
    if(NOT headers)
        set(headers android/log.h android-base cutils log)
    endif()
    foreach(header IN LISTS headers)
        # Debian 13 has android/log.h in /usr/include itself.
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

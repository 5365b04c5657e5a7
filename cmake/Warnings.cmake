# Warnings are errors only for the developers of the library. A compiler newer than the project may
# have further warnings, which must not keep others from building it.
option(VELK_WERROR "Treat warnings as errors" OFF)
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wundef)
if(VELK_WERROR)
    add_compile_options(-Werror)
endif()

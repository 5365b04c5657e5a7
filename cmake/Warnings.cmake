# Warnings are errors to those who develop the library. A compiler that is newer than the project
# may know more of them, which is to keep nobody from building it.
option(VELK_WERROR "Treat warnings as errors" OFF)
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wundef)
if(VELK_WERROR)
    add_compile_options(-Werror)
endif()

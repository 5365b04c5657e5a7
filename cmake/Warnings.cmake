# Warnings are errors unless a packager asks otherwise.
option(VELK_WERROR "Treat warnings as errors" ON)
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wundef)
if(VELK_WERROR)
    add_compile_options(-Werror)
endif()

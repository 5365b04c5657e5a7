# Cross-compiles for arm64 Linux with the distribution's compiler, and runs the result under
# qemu-user. The arm64 packages that the desk needs are unpacked below build/ by script/arm64.
set(VELK_ARM64_ROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-packages/root)
cmake_path(NORMAL_PATH VELK_ARM64_ROOT)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${VELK_ARM64_ROOT})

set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH ${VELK_ARM64_ROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Where the unpacked libraries find the libraries that they need.
set(CMAKE_SHARED_LINKER_FLAGS_INIT
    "-Wl,-rpath-link,${VELK_ARM64_ROOT}/usr/lib/aarch64-linux-gnu/android")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${CMAKE_SHARED_LINKER_FLAGS_INIT}")

# Compiles for Android without an NDK, to find uses of what a device does not have: with clang's
# Android target, LLVM's C++ library, the distribution's C library instead of the device's, and only
# those headers of the platform that the library may use. Makes objects only; nothing is linked.
set(CMAKE_SYSTEM_NAME Linux) # CMake's own support for Android insists on an NDK.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

include(${CMAKE_CURRENT_LIST_DIR}/AospHeaders.cmake)
velk_link_aosp_headers(${CMAKE_BINARY_DIR}/platform
    android/log.h cutils/compiler.h cutils/properties.h cutils/trace.h)

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET aarch64-linux-android29)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-android29)
execute_process(COMMAND clang -print-resource-dir OUTPUT_VARIABLE VELK_CLANG_RESOURCES
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(SET VELK_LIBCXX NORMALIZE "${VELK_CLANG_RESOURCES}/../../../include/c++/v1")
# Excludes /usr/include, where the desk's libraries are.
set(CMAKE_C_FLAGS_INIT "-nostdlibinc -isystem /usr/aarch64-linux-gnu/include")
set(CMAKE_CXX_FLAGS_INIT
    "-nostdlibinc -nostdinc++ -isystem ${VELK_LIBCXX} -isystem /usr/aarch64-linux-gnu/include")

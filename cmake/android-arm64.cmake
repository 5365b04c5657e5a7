# The NDK's own toolchain file, in the folder that ANDROID_NDK names. The cache stores the folder,
# so that later builds work without the variable.
if(DEFINED ENV{ANDROID_NDK})
    set(VELK_ANDROID_NDK "$ENV{ANDROID_NDK}" CACHE PATH "Folder of the Android NDK" FORCE)
endif()
set(VELK_NDK_TOOLCHAIN "${VELK_ANDROID_NDK}/build/cmake/android.toolchain.cmake")
if(NOT EXISTS "${VELK_NDK_TOOLCHAIN}")
    message(FATAL_ERROR "The environment variable ANDROID_NDK has to name the folder of an Android "
                        "NDK: there is no '${VELK_NDK_TOOLCHAIN}'")
endif()
# CMake's compiler checks read this file too, with a cache of their own.
set(ENV{ANDROID_NDK} "${VELK_ANDROID_NDK}")
include("${VELK_NDK_TOOLCHAIN}")

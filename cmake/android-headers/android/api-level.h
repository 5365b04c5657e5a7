/*
 * Bionic's header of this name, which LLVM's C++ library asks for on Android. The compiler defines
 * the one macro that is wanted of it, __ANDROID_API__.
 */
#pragma once

/*
 * Bionic's header of this name, which LLVM's C++ library asks for on Android. The C library that
 * stands in for Bionic declares the same in locale.h.
 */
#pragma once

#include <locale.h>

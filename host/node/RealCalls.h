/*
 * The C library's own functions behind those that this library interposes. A null
 * pointer of a caller is handed on to the kernel, which answers it.
 */
#pragma once

#include <sys/types.h>

#include <cstdio>

namespace desk::real {

int openat(int folder, const char* path, int flags, mode_t mode);
int ioctl(int descriptor, unsigned long request, void* argument);
int fcntl(int descriptor, int command, void* argument);
int close(int descriptor);
int closeRange(unsigned first, unsigned last, int flags);
void closeFrom(int first);
int dup3(int descriptor, int target, int flags);
FILE* fopen(const char* path, const char* mode);
FILE* freopen(const char* path, const char* mode, FILE* stream);
int fclose(FILE* stream);

}  // namespace desk::real

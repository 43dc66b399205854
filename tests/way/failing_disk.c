// SPDX-License-Identifier: Apache-2.0
// A disk that fails, for a process that is started with this library preloaded: while the file
// $FAILING_DISK holds an error number, writes to files below $FAILING_DISK_PLACE end with it, as
// they do once the kernel has made a damaged file system read-only under the files that are open.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

static int error_now(void) {
    const char* const file = getenv("FAILING_DISK");
    FILE* const stream = file == NULL ? NULL : fopen(file, "re");
    if (stream == NULL) return 0;
    char text[16] = "";
    const int error = fgets(text, sizeof text, stream) == NULL ? 0 : atoi(text);
    fclose(stream);
    return error;
}

static int lies_there(int descriptor) {
    const char* const place = getenv("FAILING_DISK_PLACE");
    char link[64];
    char path[4096];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(link, path, sizeof path - 1);
    if (place == NULL || length <= 0) return 0;
    path[length] = '\0';
    return strncmp(path, place, strlen(place)) == 0;
}

static int fails(int descriptor) {
    const int before = errno;
    const int error = lies_there(descriptor) ? error_now() : 0;
    errno = error != 0 ? error : before;
    return error != 0;
}

// Each stands in for the C library's function of its name, whichever of the two a caller was
// compiled for.
#define WRITES(name, type, failure, parameters, arguments)     \
    type name parameters;                                      \
    type name parameters {                                     \
        type(*real) parameters;                                \
        *(void**)&real = dlsym(RTLD_NEXT, #name);              \
        return fails(descriptor) ? (failure) : real arguments; \
    }

// clang-format off
WRITES(write, ssize_t, -1, (int descriptor, const void* from, size_t size), (descriptor, from, size))
WRITES(pwrite, ssize_t, -1, (int descriptor, const void* from, size_t size, off_t at), (descriptor, from, size, at))
WRITES(pwrite64, ssize_t, -1, (int descriptor, const void* from, size_t size, int64_t at), (descriptor, from, size, at))
WRITES(ftruncate, int, -1, (int descriptor, off_t size), (descriptor, size))
WRITES(ftruncate64, int, -1, (int descriptor, int64_t size), (descriptor, size))
WRITES(fsync, int, -1, (int descriptor), (descriptor))
WRITES(fdatasync, int, -1, (int descriptor), (descriptor))
// clang-format on

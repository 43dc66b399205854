// SPDX-License-Identifier: Apache-2.0
// The counting allocator: every entrance of the C library's, operator new comes through malloc.
#include "counted_heap.h"

#include <cerrno>
#include <cstdlib>

namespace {

bool g_counting = false;
size_t g_allocations = 0;

void count() {
    if (g_counting) ++g_allocations;
}

}  // namespace

namespace pwrmgt::test {

void start_counting() {
    g_allocations = 0;
    g_counting = true;
}

size_t stop_counting() {
    g_counting = false;
    return g_allocations;
}

}  // namespace pwrmgt::test

// What is handed out comes from the C library as ever, so its free() stays as it is.
extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t members, size_t size);
void* __libc_realloc(void* old, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

void* malloc(size_t size) {
    count();
    return __libc_malloc(size);
}

void* calloc(size_t members, size_t size) {
    count();
    return __libc_calloc(members, size);
}

void* realloc(void* old, size_t size) {
    count();
    return __libc_realloc(old, size);
}

void* memalign(size_t alignment, size_t size) {
    count();
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    count();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** out, size_t alignment, size_t size) {
    count();
    *out = __libc_memalign(alignment, size);
    return *out != nullptr ? 0 : ENOMEM;
}

}  // extern "C"

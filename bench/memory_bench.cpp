// SPDX-License-Identifier: Apache-2.0
// Anonymous memory of a reading process over that of a bare C++ process, both started here.
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "scratch.h"

using namespace pwrmgt::bench;

namespace {

long kilobytes_of(const char* program) {
    std::FILE* output = popen(("exec '" + std::string{program} + "'").c_str(), "r");
    if (output == nullptr) throw std::runtime_error(std::string{program} + " does not start");
    long kilobytes = 0;
    const bool told = std::fscanf(output, "%ld", &kilobytes) == 1;
    if (pclose(output) != 0 || !told) throw std::runtime_error(std::string{program} + " failed");
    return kilobytes;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::fprintf(stderr, "usage: memory_bench READER BARE\n");
        return 2;
    }
    const Scratch place;
    fill_library(measured_day());
    const long reader = kilobytes_of(argv[1]);
    const long bare = kilobytes_of(argv[2]);
    std::printf("memory.reader_kb\t%ld\n", reader);
    std::printf("memory.bare_kb\t%ld\n", bare);
    std::printf("memory.reader_over_bare_kb\t%ld\n", reader - bare);
    return 0;
} catch (const std::exception& trouble) {
    std::fprintf(stderr, "memory_bench: %s\n", trouble.what());
    return 1;
}

// SPDX-License-Identifier: Apache-2.0
// Stands in the place of a program for another machine and starts it under the emulator, so that a
// test of either machine can execute it by its path. EMULATOR and PROGRAM are given by the build,
// for this machine and linked statically: a library that is to be preloaded into the program would
// not fit in here.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static char* const kEmulator[] = {EMULATOR};
enum { kWords = sizeof kEmulator / sizeof kEmulator[0] };

int main(int argc, char** argv) {
    char** const command = calloc((size_t)argc + kWords + 6, sizeof *command);
    const char* const preloaded = getenv("LD_PRELOAD");
    char* setting = NULL;
    if (command == NULL) return 126;
    char** end = command;
    for (int at = 0; at < kWords; ++at)
        *end++ = kEmulator[at];
    // The emulator is a program of this machine, and loads libraries as well.
    if (preloaded != NULL) {
        setting = malloc(strlen(preloaded) + sizeof "LD_PRELOAD=");
        if (setting == NULL) return 126;
        sprintf(setting, "LD_PRELOAD=%s", preloaded);
        unsetenv("LD_PRELOAD");
        *end++ = "-E";
        *end++ = setting;
    }
    *end++ = "-0";
    *end++ = argc > 0 ? argv[0] : PROGRAM;
    *end++ = PROGRAM;
    for (int at = 1; at < argc; ++at)
        *end++ = argv[at];
    execv(command[0], command);
    perror(command[0]);
    free(setting);
    free(command);
    return 126;
}

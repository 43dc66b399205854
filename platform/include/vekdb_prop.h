/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The property database: numbers that describe the machine, by key path.
 *
 * Every reader returns 0 when the value was read. On any other return the
 * output keeps what the caller put there.
 */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Reads an 8-bit property.
 *
 * @param path  key path, such as "/dc/tavn/dm/planar/0/psu/maxcount"
 * @param out   [out] the value; untouched unless 0 is returned
 * @return 0 when read; else a non-zero code (host platform: 1 null argument,
 *         2 no property file, 3 no such key, 4 not a number, 5 too wide)
 */
int propdb_get_byte(const char* path, uint8_t* out);

/** As propdb_get_byte(), 16 bits. */
int propdb_get_word(const char* path, uint16_t* out);

/** As propdb_get_byte(), 32 bits. */
int propdb_get_dword(const char* path, uint32_t* out);

#ifdef __cplusplus
}
#endif

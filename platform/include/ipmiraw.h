/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Raw IPMI: one request to the platform firmware and its response.
 */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Sends one request frame and waits for the answer.
 *
 * @param request          responder address (0x20), network function, LUN,
 *                         command, then the data
 * @param request_length   bytes in `request`, all of them counted
 * @param response         [out] completion code, then the data; room for 256
 *                         bytes: never more are written
 * @param response_length  [in,out] 0 on entry; bytes received, completion code
 *                         included
 * @return 0 when the exchange took place (`response[0]` is then the completion
 *         code), non-zero when it did not
 */
int send_ipmi_cmd(const uint8_t* request, uint32_t* request_length, uint8_t* response,
                  uint32_t* response_length);

#ifdef __cplusplus
}
#endif

/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Which platform family the controller belongs to.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Non-zero when the controller runs on the quoril platform family. */
int is_quoril_platform(void);

#ifdef __cplusplus
}
#endif

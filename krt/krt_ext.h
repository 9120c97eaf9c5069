/* SPDX-License-Identifier: MIT */
/* krt_ext: this project's additions to the device library beyond the maker's krt_api.h:
 * stream statistics, the choice of backend and messages meant for the user.
 *
 * Results follow krt_api.h: 0 for success, non-zero for a failure. */
#ifndef KRT_EXT_H
#define KRT_EXT_H

#include "krt/krt_api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Underruns the device has counted since the session was opened. */
KRT_API int krtGetUnderrunCount(int handle, int64_t* count);

#ifdef __cplusplus
}
#endif

#endif /* KRT_EXT_H */

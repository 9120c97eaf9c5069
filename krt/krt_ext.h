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

#define KRT_BACKEND_SIMULATED 0
#define KRT_BACKEND_SOAPYSDR 1

/* No handle. 1 when this build has the backend, 0 when it has not. */
KRT_API int krtBackendAvailable(int backend);
/* No handle. Chooses whose devices krtGetDeviceList lists and krtOpenDeviceBySerial opens;
 * sessions already open play on. Non-zero, changing nothing, for a backend this build lacks.
 * The simulated devices are chosen until this is called. */
KRT_API int krtSelectBackend(int backend);
/* No handle. Level in dBm of a full-scale sample at gain 0 dB of the SoapySDR device with this
 * serial number (0 until set); takes effect at once on an open session. */
KRT_API int krtSetLevelCalibration(int serialNumber, double offsetDb);

/* Receives messages meant for the user's error log: code -1 for a setting the device plays
 * differently from what was asked (the text ends in "clamped"). Called on the thread of the
 * call that caused it, at most once for each setting value in a session. */
typedef void (*KrtMessageHandler)(int code, const char* message);
/* No handle. Null stops the messages. */
KRT_API int krtSetMessageHandler(KrtMessageHandler handler);

#ifdef __cplusplus
}
#endif

#endif /* KRT_EXT_H */

/* SPDX-License-Identifier: MIT */
/* krt_api: the device library of the KRT40 vector signal generator.
 *
 * Plain C interface; every call but the four marked "no handle" takes the session handle first.
 * Results are 0 for success and non-zero for a failure or a warning (a clamped setting). */
#ifndef KRT_API_H
#define KRT_API_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define KRT_API __attribute__((visibility("default")))
#else
#define KRT_API
#endif

/* No handle. On entry *count is the capacity of serials; on return it is the number written. */
KRT_API int krtGetDeviceList(int* serials, int* count);
/* No handle. Opens the device with this serial number into *handle; takes seconds. */
KRT_API int krtOpenDeviceBySerial(int* handle, int serialNumber);
KRT_API int krtCloseDevice(int handle);
/* Drops everything queued and stops the output stream. */
KRT_API int krtAbort(int handle);
KRT_API int krtGetSerialNumber(int handle, int* serialNumber);
KRT_API int krtGetFirmwareVersion(int handle, int* version);
/* No handle. Zero-terminated version text of this library. */
KRT_API const char* krtGetAPIVersion(void);
/* 0 while the USB connection is healthy, non-zero once it has failed. Cheap. */
KRT_API int krtGetUSBStatus(int handle);
/* Degrees Celsius. */
KRT_API int krtReadTemperature(int handle, float* temperature);
/* Centre frequency in Hz, 30e6 to 6e9. */
KRT_API int krtSetFrequency(int handle, double frequency);
/* Output level in dBm of a full-scale sample (magnitude 1.0), -120 to 10. */
KRT_API int krtSetLevel(int handle, double level);
/* Samples per second of the submitted stream, (0, 54e6]. */
KRT_API int krtSetSampleRate(int handle, double sampleRate);
/* 1 selects the low-spur tuning. */
KRT_API int krtSetDigitalTuning(int handle, int enabled);
/* I and Q DC offsets in device units, each -1024 to 1024. */
KRT_API int krtSetIQOffset(int handle, int16_t iOffset, int16_t qOffset);
/* 0 internal, 1 external reference. */
KRT_API int krtSetTimebase(int handle, int state);
/* Timebase correction in ppm, -2 to 2. */
KRT_API int krtSetTimebaseOffset(int handle, double ppm);
KRT_API int krtSetRFOutputState(int handle, int enabled);
/* Queues count interleaved I/Q complex samples; blocks while the device queue is full. */
KRT_API int krtSubmitIQ(int handle, const float* iq, int count);
/* Puts a trigger mark into the stream at this point. */
KRT_API int krtSubmitTrigger(int handle);
/* Returns when everything queued has been played. */
KRT_API int krtFlushAndWait(int handle);
/* No handle. Process-wide setting, made before any device is open. */
KRT_API int krtEnablePowerSavingCpuMode(int enabled);

#ifdef __cplusplus
}
#endif

#endif /* KRT_API_H */

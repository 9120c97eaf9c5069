// SPDX-License-Identifier: MIT
// The 21 C entry points of krt_api.h on the simulated KRT40; each call goes to the events log.
#include "krt/krt_api.h"
#include "krt/krt_ext.h"

#include <optional>
#include <utility>

#include "krt/sim_device.h"
#include "krt/sim_events.h"
#include "krt/sim_library.h"
#include "krt/sim_status.h"

using krtsim::Json;
using krtsim::SimDevice;
using krtsim::SimLibrary;

namespace {

const char kApiVersion[] = "1.0.0 (simulated)";

SimLibrary& lib() { return SimLibrary::instance(); }

// No exception crosses the C interface.
template <typename F>
int guarded(F&& f) {
  try {
    return f();
  } catch (...) {
    return krtsim::kErrInternal;
  }
}

// f(device) on the open session of handle; kErrNotOpen, doing nothing, when there is none.
template <typename F>
int onDevice(int handle, F&& f) {
  return guarded([&] {
    const std::shared_ptr<SimDevice> device = lib().find(handle);
    return device ? f(*device) : krtsim::kErrNotOpen;
  });
}

// Writes the call's line; args() and out() build their objects only when the log is on.
template <typename Args, typename Out>
void logCall(const char* fn, std::optional<int> handle, Json ret, Args&& args, Out&& out) {
  krtsim::EventLog& events = lib().events();
  if (!events.enabled()) return;
  try {
    events.call(fn, handle, args(), std::move(ret), out());
  } catch (...) {
  }
}

template <typename Args>
void logCall(const char* fn, std::optional<int> handle, Json ret, Args&& args) {
  logCall(fn, handle, std::move(ret), std::forward<Args>(args), [] { return Json(); });
}

Json noArgs() { return Json::object(); }

}  // namespace

extern "C" {

int krtGetDeviceList(int* serials, int* count) {
  const Json capacity = count ? Json(*count) : Json();  // the count on entry
  const int r = guarded([&] { return lib().deviceList(serials, count); });
  logCall(
      "krtGetDeviceList", std::nullopt, r,
      [&] {
        return Json{{"count", capacity}};
      },
      [&] {
        if (r != krtsim::kOk) return Json();
        Json list = Json::array();
        for (int i = 0; i < *count; ++i) list.push_back(serials[i]);
        return Json{{"serials", std::move(list)}, {"count", *count}};
      });
  return r;
}

int krtOpenDeviceBySerial(int* handle, int serialNumber) {
  const int r = guarded([&] { return lib().open(handle, serialNumber); });
  logCall(
      "krtOpenDeviceBySerial", std::nullopt, r,
      [&] {
        return Json{{"serialNumber", serialNumber}};
      },
      [&] {
        return handle ? Json{{"handle", *handle}} : Json();
      });
  return r;
}

int krtCloseDevice(int handle) {
  const int r = guarded([&] { return lib().close(handle); });
  logCall("krtCloseDevice", handle, r, noArgs);
  return r;
}

int krtAbort(int handle) {
  const int r = onDevice(handle, [](SimDevice& d) { return d.abort(); });
  logCall("krtAbort", handle, r, noArgs);
  return r;
}

int krtGetSerialNumber(int handle, int* serialNumber) {
  const int r = onDevice(handle, [&](SimDevice& d) {
    if (!serialNumber) return int(krtsim::kErrArgument);
    *serialNumber = d.serialNumber();
    return int(krtsim::kOk);
  });
  logCall("krtGetSerialNumber", handle, r, noArgs, [&] {
    return r == krtsim::kOk ? Json{{"serialNumber", *serialNumber}} : Json();
  });
  return r;
}

int krtGetFirmwareVersion(int handle, int* version) {
  const int r = onDevice(handle, [&](SimDevice&) {
    if (!version) return int(krtsim::kErrArgument);
    *version = SimDevice::kFirmwareVersion;
    return int(krtsim::kOk);
  });
  logCall("krtGetFirmwareVersion", handle, r, noArgs, [&] {
    return r == krtsim::kOk ? Json{{"version", *version}} : Json();
  });
  return r;
}

const char* krtGetAPIVersion(void) {
  logCall("krtGetAPIVersion", std::nullopt, kApiVersion, noArgs);
  return kApiVersion;
}

int krtGetUSBStatus(int handle) {
  const int r = onDevice(handle, [](SimDevice& d) { return d.usbStatus(); });
  logCall("krtGetUSBStatus", handle, r, noArgs);
  return r;
}

int krtReadTemperature(int handle, float* temperature) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.readTemperature(temperature); });
  logCall("krtReadTemperature", handle, r, noArgs, [&] {
    return r == krtsim::kOk ? Json{{"temperature", *temperature}} : Json();
  });
  return r;
}

int krtSetFrequency(int handle, double frequency) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.setFrequency(frequency); });
  logCall("krtSetFrequency", handle, r, [&] { return Json{{"frequency", frequency}}; });
  return r;
}

int krtSetLevel(int handle, double level) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.setLevel(level); });
  logCall("krtSetLevel", handle, r, [&] { return Json{{"level", level}}; });
  return r;
}

int krtSetSampleRate(int handle, double sampleRate) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.setSampleRate(sampleRate); });
  logCall("krtSetSampleRate", handle, r, [&] { return Json{{"sampleRate", sampleRate}}; });
  return r;
}

int krtSetDigitalTuning(int handle, int enabled) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.setDigitalTuning(enabled); });
  logCall("krtSetDigitalTuning", handle, r, [&] { return Json{{"enabled", enabled}}; });
  return r;
}

int krtSetIQOffset(int handle, int16_t iOffset, int16_t qOffset) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.setIqOffset(iOffset, qOffset); });
  logCall("krtSetIQOffset", handle, r, [&] {
    return Json{{"iOffset", iOffset}, {"qOffset", qOffset}};
  });
  return r;
}

int krtSetTimebase(int handle, int state) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.setTimebase(state); });
  logCall("krtSetTimebase", handle, r, [&] { return Json{{"state", state}}; });
  return r;
}

int krtSetTimebaseOffset(int handle, double ppm) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.setTimebaseOffset(ppm); });
  logCall("krtSetTimebaseOffset", handle, r, [&] { return Json{{"ppm", ppm}}; });
  return r;
}

int krtSetRFOutputState(int handle, int enabled) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.setRfOutputState(enabled); });
  logCall("krtSetRFOutputState", handle, r, [&] { return Json{{"enabled", enabled}}; });
  return r;
}

int krtSubmitIQ(int handle, const float* iq, int count) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.submit(iq, count); });
  logCall("krtSubmitIQ", handle, r, [&] { return Json{{"count", count}}; });
  return r;
}

int krtSubmitTrigger(int handle) {
  const int r = onDevice(handle, [](SimDevice& d) { return d.trigger(); });
  logCall("krtSubmitTrigger", handle, r, noArgs);
  return r;
}

int krtFlushAndWait(int handle) {
  const int r = onDevice(handle, [](SimDevice& d) { return d.flushAndWait(); });
  logCall("krtFlushAndWait", handle, r, noArgs);
  return r;
}

int krtEnablePowerSavingCpuMode(int enabled) {
  const int r = guarded([&] { return lib().setPowerSavingCpuMode(enabled); });
  logCall("krtEnablePowerSavingCpuMode", std::nullopt, r, [&] {
    return Json{{"enabled", enabled}};
  });
  return r;
}

int krtGetUnderrunCount(int handle, int64_t* count) {
  const int r = onDevice(handle, [&](SimDevice& d) { return d.underrunCount(count); });
  logCall("krtGetUnderrunCount", handle, r, noArgs, [&] {
    return r == krtsim::kOk ? Json{{"count", *count}} : Json();
  });
  return r;
}

}  // extern "C"

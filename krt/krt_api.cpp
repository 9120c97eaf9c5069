// SPDX-License-Identifier: MIT
// The C entry points of krt_api.h and krt_ext.h: each call goes to the session of its handle, on
// the simulated KRT40 or a SoapySDR transmitter, and to the events log.
#include "krt/krt_api.h"
#include "krt/krt_ext.h"

#include <atomic>
#include <cmath>
#include <optional>
#include <utility>

#include "krt/krt_backend.h"
#include "krt/krt_session.h"
#include "krt/sim_events.h"
#include "krt/sim_library.h"
#include "krt/sim_status.h"

using krtsim::Json;
using krtsim::Backend;
using krtsim::Session;
using krtsim::SimLibrary;

namespace {

const char kApiVersion[] = "1.0.0 (simulated)";

SimLibrary& lib() { return SimLibrary::instance(); }

std::atomic<int> selectedBackend{KRT_BACKEND_SIMULATED};

// The backend whose devices are listed and opened.
Backend& chosen() {
  Backend* soapy = krtsim::soapyBackend();
  if (soapy && selectedBackend.load(std::memory_order_relaxed) == KRT_BACKEND_SOAPYSDR)
    return *soapy;
  return lib();
}

// The backend holding handle, or null for a handle no backend gave out.
Backend* owner(int handle) {
  if (lib().ownsHandle(handle)) return &lib();
  Backend* soapy = krtsim::soapyBackend();
  return soapy && soapy->ownsHandle(handle) ? soapy : nullptr;
}

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
    Backend* backend = owner(handle);
    const std::shared_ptr<Session> device = backend ? backend->find(handle) : nullptr;
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
  const int r = guarded([&] { return chosen().deviceList(serials, count); });
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
  const int r = guarded([&] { return chosen().open(handle, serialNumber); });
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
  const int r = guarded([&] {
    Backend* backend = owner(handle);
    return backend ? backend->close(handle) : int(krtsim::kErrNotOpen);
  });
  logCall("krtCloseDevice", handle, r, noArgs);
  return r;
}

int krtAbort(int handle) {
  const int r = onDevice(handle, [](Session& d) { return d.abort(); });
  logCall("krtAbort", handle, r, noArgs);
  return r;
}

int krtGetSerialNumber(int handle, int* serialNumber) {
  const int r = onDevice(handle, [&](Session& d) {
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
  const int r = onDevice(handle, [&](Session& d) {
    if (!version) return int(krtsim::kErrArgument);
    *version = d.firmwareVersion();
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
  const int r = onDevice(handle, [](Session& d) { return d.usbStatus(); });
  logCall("krtGetUSBStatus", handle, r, noArgs);
  return r;
}

int krtReadTemperature(int handle, float* temperature) {
  const int r = onDevice(handle, [&](Session& d) { return d.readTemperature(temperature); });
  logCall("krtReadTemperature", handle, r, noArgs, [&] {
    return r == krtsim::kOk ? Json{{"temperature", *temperature}} : Json();
  });
  return r;
}

int krtSetFrequency(int handle, double frequency) {
  const int r = onDevice(handle, [&](Session& d) { return d.setFrequency(frequency); });
  logCall("krtSetFrequency", handle, r, [&] { return Json{{"frequency", frequency}}; });
  return r;
}

int krtSetLevel(int handle, double level) {
  const int r = onDevice(handle, [&](Session& d) { return d.setLevel(level); });
  logCall("krtSetLevel", handle, r, [&] { return Json{{"level", level}}; });
  return r;
}

int krtSetSampleRate(int handle, double sampleRate) {
  const int r = onDevice(handle, [&](Session& d) { return d.setSampleRate(sampleRate); });
  logCall("krtSetSampleRate", handle, r, [&] { return Json{{"sampleRate", sampleRate}}; });
  return r;
}

int krtSetDigitalTuning(int handle, int enabled) {
  const int r = onDevice(handle, [&](Session& d) { return d.setDigitalTuning(enabled); });
  logCall("krtSetDigitalTuning", handle, r, [&] { return Json{{"enabled", enabled}}; });
  return r;
}

int krtSetIQOffset(int handle, int16_t iOffset, int16_t qOffset) {
  const int r = onDevice(handle, [&](Session& d) { return d.setIqOffset(iOffset, qOffset); });
  logCall("krtSetIQOffset", handle, r, [&] {
    return Json{{"iOffset", iOffset}, {"qOffset", qOffset}};
  });
  return r;
}

int krtSetTimebase(int handle, int state) {
  const int r = onDevice(handle, [&](Session& d) { return d.setTimebase(state); });
  logCall("krtSetTimebase", handle, r, [&] { return Json{{"state", state}}; });
  return r;
}

int krtSetTimebaseOffset(int handle, double ppm) {
  const int r = onDevice(handle, [&](Session& d) { return d.setTimebaseOffset(ppm); });
  logCall("krtSetTimebaseOffset", handle, r, [&] { return Json{{"ppm", ppm}}; });
  return r;
}

int krtSetRFOutputState(int handle, int enabled) {
  const int r = onDevice(handle, [&](Session& d) { return d.setRfOutputState(enabled); });
  logCall("krtSetRFOutputState", handle, r, [&] { return Json{{"enabled", enabled}}; });
  return r;
}

int krtSubmitIQ(int handle, const float* iq, int count) {
  const int r = onDevice(handle, [&](Session& d) { return d.submit(iq, count); });
  logCall("krtSubmitIQ", handle, r, [&] { return Json{{"count", count}}; });
  return r;
}

int krtSubmitTrigger(int handle) {
  const int r = onDevice(handle, [](Session& d) { return d.trigger(); });
  logCall("krtSubmitTrigger", handle, r, noArgs);
  return r;
}

int krtFlushAndWait(int handle) {
  const int r = onDevice(handle, [](Session& d) { return d.flushAndWait(); });
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
  const int r = onDevice(handle, [&](Session& d) { return d.underrunCount(count); });
  logCall("krtGetUnderrunCount", handle, r, noArgs, [&] {
    return r == krtsim::kOk ? Json{{"count", *count}} : Json();
  });
  return r;
}

int krtBackendAvailable(int backend) {
  const int r = backend == KRT_BACKEND_SIMULATED ||
                (backend == KRT_BACKEND_SOAPYSDR && krtsim::soapyBackend() != nullptr);
  logCall("krtBackendAvailable", std::nullopt, r, [&] { return Json{{"backend", backend}}; });
  return r;
}

int krtSelectBackend(int backend) {
  const int r = krtBackendAvailable(backend) ? krtsim::kOk : krtsim::kErrArgument;
  if (r == krtsim::kOk) selectedBackend.store(backend, std::memory_order_relaxed);
  logCall("krtSelectBackend", std::nullopt, r, [&] { return Json{{"backend", backend}}; });
  return r;
}

int krtSetLevelCalibration(int serialNumber, double offsetDb) {
  const int r = guarded([&] {
    if (!std::isfinite(offsetDb)) return int(krtsim::kErrArgument);
    if (Backend* soapy = krtsim::soapyBackend()) soapy->setLevelCalibration(serialNumber, offsetDb);
    return int(krtsim::kOk);
  });
  logCall("krtSetLevelCalibration", std::nullopt, r, [&] {
    return Json{{"serialNumber", serialNumber}, {"offsetDb", offsetDb}};
  });
  return r;
}

int krtSetMessageHandler(KrtMessageHandler handler) {
  if (Backend* soapy = krtsim::soapyBackend()) soapy->setMessageSink(handler);
  logCall("krtSetMessageHandler", std::nullopt, 0, noArgs);
  return 0;
}

}  // extern "C"

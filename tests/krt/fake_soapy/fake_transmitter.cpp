// SPDX-License-Identifier: MIT
// A SoapySDR module for tests: one transmitter, "krt40fake", that records what it is given.
//
// Configured from the environment when it is made:
//   KRT40_FAKE_SOAPY_RECORD       path prefix: <prefix>.cf32 (samples as written, interleaved
//                                 float I/Q) and <prefix>.log ("<call> <value> <position>" lines,
//                                 the position being the samples in <prefix>.cf32 before it)
//   KRT40_FAKE_SOAPY_SEGMENT_MAX  samples recorded at most after each of those calls (default
//                                 200000): the device never paces, so a test keeps the start of
//                                 every setting's output and the files stay small
//   KRT40_FAKE_SOAPY_MAX_RATE     highest sample rate, continuous from 1e5 (default 40e6)
//   KRT40_FAKE_SOAPY_UNDERRUNS    underruns reported as stream events, one after each write
//   KRT40_FAKE_SOAPY_VANISH_FILE  while this file exists the device is not found and every
//                                 write fails as an unplugged device's would
// Gain runs 0 to 60 dB. Writes take everything at once: the device never paces.
#include <SoapySDR/Device.hpp>
#include <SoapySDR/Errors.hpp>
#include <SoapySDR/Formats.hpp>
#include <SoapySDR/Registry.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <sys/stat.h>

namespace {

std::string env(const char* name, const char* fallback = "") {
  const char* value = std::getenv(name);
  return value && *value ? value : fallback;
}

bool vanished() {
  const std::string path = env("KRT40_FAKE_SOAPY_VANISH_FILE");
  struct stat st;
  return !path.empty() && stat(path.c_str(), &st) == 0;
}

class FakeTransmitter : public SoapySDR::Device {
public:
  FakeTransmitter()
      : segmentMax_(std::atoll(env("KRT40_FAKE_SOAPY_SEGMENT_MAX", "200000").c_str())),
        maxRate_(std::atof(env("KRT40_FAKE_SOAPY_MAX_RATE", "40e6").c_str())),
        underruns_(std::atoi(env("KRT40_FAKE_SOAPY_UNDERRUNS", "0").c_str())) {
    const std::string prefix = env("KRT40_FAKE_SOAPY_RECORD");
    if (prefix.empty()) return;
    samples_.open(prefix + ".cf32", std::ios::binary | std::ios::app);
    log_.open(prefix + ".log", std::ios::app);
  }

  std::string getDriverKey() const override { return "krt40fake"; }
  std::string getHardwareKey() const override { return "krt40fake"; }
  SoapySDR::Kwargs getHardwareInfo() const override { return {{"firmware", "7.2"}}; }
  size_t getNumChannels(const int direction) const override {
    return direction == SOAPY_SDR_TX ? 1 : 0;
  }

  SoapySDR::Range getGainRange(const int, const size_t) const override { return {0, 60}; }
  void setGain(const int, const size_t, const double value) override { note("gain", value); }
  void setFrequency(const int, const size_t, const double hz, const SoapySDR::Kwargs&) override {
    note("frequency", hz);
  }
  SoapySDR::RangeList getSampleRateRange(const int, const size_t) const override {
    return {SoapySDR::Range(1e5, maxRate_)};
  }
  void setSampleRate(const int, const size_t, const double rate) override { note("rate", rate); }
  std::vector<std::string> listSensors() const override { return {"board_temp"}; }
  std::string readSensor(const std::string&) const override { return "36.5"; }

  SoapySDR::Stream* setupStream(const int direction, const std::string& format,
                                const std::vector<size_t>&, const SoapySDR::Kwargs&) override {
    if (direction != SOAPY_SDR_TX || format != SOAPY_SDR_CF32)
      throw std::runtime_error("krt40fake transmits CF32 only");
    return reinterpret_cast<SoapySDR::Stream*>(this);
  }
  void closeStream(SoapySDR::Stream*) override {}
  int activateStream(SoapySDR::Stream*, const int, const long long, const size_t) override {
    note("activate", 1);
    return 0;
  }
  int deactivateStream(SoapySDR::Stream*, const int, const long long) override {
    note("deactivate", 1);
    return 0;
  }

  int writeStream(SoapySDR::Stream*, const void* const* buffs, const size_t numElems, int& flags,
                  const long long, const long) override {
    if (vanished()) return SOAPY_SDR_STREAM_ERROR;
    std::lock_guard<std::mutex> lock(mutex_);
    const long long kept = std::max(0LL, std::min<long long>(segmentLeft_, numElems));
    if (samples_ && kept > 0) samples_.write(static_cast<const char*>(buffs[0]), kept * 8);
    segmentLeft_ -= kept;
    recorded_ += kept;
    wroteSinceStatus_ = numElems > 0;
    if (flags & SOAPY_SDR_END_BURST) endBurst_ = true;
    return static_cast<int>(numElems);
  }

  int readStreamStatus(SoapySDR::Stream*, size_t&, int& flags, long long&, const long) override {
    std::lock_guard<std::mutex> lock(mutex_);
    if (underruns_ > 0 && wroteSinceStatus_) {
      --underruns_;
      wroteSinceStatus_ = false;
      return SOAPY_SDR_UNDERFLOW;
    }
    if (endBurst_) {
      endBurst_ = false;
      flags = SOAPY_SDR_END_BURST;
      return 0;
    }
    return SOAPY_SDR_TIMEOUT;
  }

private:
  void note(const char* call, double value) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!log_) return;
    char line[96];
    std::snprintf(line, sizeof line, "%s %.17g %lld\n", call, value, recorded_);
    log_ << line << std::flush;
    segmentLeft_ = segmentMax_;
  }

  const long long segmentMax_;
  const double maxRate_;
  std::mutex mutex_;
  std::ofstream samples_;
  std::ofstream log_;
  long long recorded_ = 0;
  long long segmentLeft_ = 0;
  int underruns_;
  bool wroteSinceStatus_ = false;
  bool endBurst_ = false;
};

SoapySDR::KwargsList findFake(const SoapySDR::Kwargs& args) {
  const auto driver = args.find("driver");
  if (vanished() || (driver != args.end() && driver->second != "krt40fake")) return {};
  return {{{"driver", "krt40fake"}, {"serial", "FAKE0001"}, {"label", "KRT40 fake transmitter"}}};
}

SoapySDR::Device* makeFake(const SoapySDR::Kwargs&) { return new FakeTransmitter; }

const SoapySDR::Registry registerFake("krt40fake", &findFake, &makeFake, SOAPY_SDR_ABI_VERSION);

}  // namespace

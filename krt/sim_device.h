// SPDX-License-Identifier: MIT
// One open session of a simulated KRT40: its settings, its sample queue and its player thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "krt/krt_session.h"
#include "krt/sample_block.h"
#include "krt/sim_settings.h"

namespace krtsim {

class EventLog;
class SimRecorder;
class UnplugWatch;
struct SimConfig;

// The queue holds samples and, in stream order between them, settings and trigger marks; a
// mark takes effect when the play position reaches it. The device plays at sample rate x
// speed by the clock: whoever touches the device (the player thread every millisecond while
// samples flow, and every API call first) consumes what is due up to now, so the position is
// exact whatever the threads' scheduling. Without recording the queue holds counts only, and
// at speed 0 submitted samples are played on the spot.
//
// Thread-safety: every public member may be called from any thread; the library's contract is
// one caller per handle at a time.
class SimDevice final : public Session {
public:
  static constexpr int kFirmwareVersion = 3;

  // recorder: the process's recording if this session holds it, else null.
  SimDevice(int handle, int serialNumber, const SimConfig& config, EventLog& events,
            UnplugWatch& unplug, std::shared_ptr<SimRecorder> recorder);
  ~SimDevice() override;
  SimDevice(const SimDevice&) = delete;
  SimDevice& operator=(const SimDevice&) = delete;

  int serialNumber() const override { return serial_; }
  int firmwareVersion() const override { return kFirmwareVersion; }

  // Setters return kOk, kWarnClamped (see sim_settings.h), or kErrUsb after a failure.
  int setFrequency(double hz) override;
  int setLevel(double dbm) override;
  int setSampleRate(double rate) override;
  int setDigitalTuning(int enabled) override;
  int setIqOffset(int16_t i, int16_t q) override;
  int setTimebase(int state) override;
  int setTimebaseOffset(double ppm) override;
  int setRfOutputState(int enabled) override;

  // Queues count samples; blocks until the queue holds at most its depth (speed > 0).
  int submit(const float* iq, int count) override;
  int trigger() override;
  // Returns when the queue has played out; ends the flow (no underrun afterwards).
  int flushAndWait() override;
  // Drops the queue; settings made stay in effect, trigger marks in the queue are dropped.
  int abort() override;
  int usbStatus() override;
  int readTemperature(float* celsius) override;
  int underrunCount(int64_t* count) override;
  // Drops the queue like abort and stops the player; later calls return kErrNotOpen.
  void close() override;

private:
  enum class Kind { Samples, Settings, Trigger };
  struct QueueItem {
    explicit QueueItem(Kind k) : kind(k) {}
    Kind kind;
    int64_t count = 0;                   // samples not yet played
    int64_t offset = 0;                  // samples of block already played
    std::shared_ptr<SampleBlock> block;  // null unless recording
    DeviceSettings settings;             // Kind::Settings: all settings from here on
  };

  template <typename Edit>
  int changeSettings(Edit edit);
  void catchUp(double now);  // the lock held by the caller, as for all below
  void advance(double t);
  int64_t dueAt(double t) const;
  void applyLive(const DeviceSettings& settings);
  void startFlowing(double now);
  void play(const std::shared_ptr<SampleBlock>& block, int64_t offset, int64_t count);
  void endFlush();
  void dropQueue();
  void markFailed();
  int64_t capacity() const;
  std::chrono::duration<double> pollInterval(int64_t samples) const;
  void playerMain();

  const int handle_;
  const int serial_;
  const double speed_;
  const double queueMs_;
  const double openedAt_;
  const std::optional<double> failAt_;
  const std::optional<double> fixedTemperature_;
  EventLog& events_;
  UnplugWatch& unplug_;
  const std::shared_ptr<SimRecorder> recorder_;

  std::mutex mutex_;
  std::condition_variable playerCv_;  // wakes the player: flow started, flush, close
  std::condition_variable waitCv_;    // wakes submit and flush waiters
  std::deque<QueueItem> queue_;
  int64_t queuedSamples_ = 0;
  DeviceSettings front_;  // as set by the caller, at the tail of the queue
  DeviceSettings live_;   // at the play position
  bool flowing_ = false;  // samples flow: since the first submit after an abort or flush
  bool flushing_ = false;
  bool failed_ = false;
  bool stopping_ = false;
  double anchor_ = 0;  // time at which playedSinceAnchor_ counted from 0
  double rate_ = 0;    // live rate x speed
  int64_t playedSinceAnchor_ = 0;
  int64_t played_ = 0;  // samples played in this session
  int64_t underruns_ = 0;
  std::thread player_;
};

}  // namespace krtsim

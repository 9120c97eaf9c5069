// SPDX-License-Identifier: MIT
// Plays a sequence: its expanded signal, retuning the device at each hop in stream order.
#include "arb/arb_mode/arb_sequence_player.h"

#include "arb/arb_sequence.h"
#include "modes/mode_host.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace {

// Sends signal[from, to) through the impairments in chunks of at most work.size(); false when
// the run ends meanwhile.
bool sendRange(const std::vector<Sample>& signal, int64_t from, int64_t to,
               std::vector<Sample>& work, ModeHost& host) {
  while (from < to) {
    const int count = static_cast<int>(std::min<int64_t>(work.size(), to - from));
    host.processImpairments(signal.data() + from, work.data(), count);
    host.submitIQ(work.data(), count);
    from += count;
    if (!host.isStreaming()) return false;
  }
  return true;
}

// The retunes go through the same ordered device calls as the samples, so each takes effect
// after the chunks queued before it.
void playHops(const SequenceBuffer& buffer, double sampleRate, bool singleShot, ModeHost& host) {
  const int64_t chunk = std::max<int64_t>(static_cast<int64_t>(sampleRate / 100.0), 1);
  std::vector<Sample> work(static_cast<size_t>(chunk));
  const int64_t length = static_cast<int64_t>(buffer.signal.size());
  host.setOutputReady();
  while (host.isStreaming()) {
    if (singleShot) {
      if (!host.takeTriggerRequest()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        continue;
      }
      host.submitTrigger();
    }
    int64_t position = 0;
    for (const SequenceBuffer::Hop& hop : buffer.hops) {
      if (!sendRange(buffer.signal, position, hop.index, work, host)) return;
      position = hop.index;
      host.setDeviceFrequency(hop.frequency);
    }
    if (!sendRange(buffer.signal, position, length, work, host)) return;
    if (singleShot) host.flushAndWait();
    if (host.connectionLost()) return;
  }
}

}  // namespace

void playArbSequence(const ArbSequence& sequence, const ArbPlaySettings& settings, bool singleShot,
                     ModeHost& host) {
  SequenceBuffer buffer;
  // An empty signal would make the hop loop retune without pause.
  if (!sequence.build(buffer) || buffer.signal.empty()) return;
  Sample* signal = buffer.signal.data();
  const int64_t length = static_cast<int64_t>(buffer.signal.size());
  const double rate = settings.sampleRateHz;
  host.retune(rate, scaleArbSamples(signal, length, settings));
  host.applyChannelFilter(signal, static_cast<int>(length));
  host.prepareNoise(meanPowerDb(signal, length), rate);
  if (buffer.hops.size() >= 2) {
    playHops(buffer, rate, singleShot, host);
    return;
  }
  if (buffer.hops.size() == 1) host.setDeviceFrequency(buffer.hops.front().frequency);
  host.submitWaveform(signal, length, singleShot);
}

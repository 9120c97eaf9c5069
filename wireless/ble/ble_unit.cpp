// SPDX-License-Identifier: MIT
// The Bluetooth LE mode as a unit (view and generator), with the fixed GFSK burst of index 12.
#include "wireless/ble/ble_unit.h"

#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "wireless/ble/ble_waveform.h"
#include "wireless/ble/gfsk_burst.h"
#include "wireless/ble/mode_view_ble.h"

namespace {

constexpr int burstModeIndex = 12;

// Runs on the streaming thread: the packet rebuilt from the controls, played at the panel's
// level as its mean power, in a loop or once a trigger. A PDU that can't be built plays
// nothing, and the thread ends by itself.
void generateBle(const ModeViewBLE& view, ModeHost& host) {
  const std::optional<std::vector<uint8_t>> pdu = view.pduBits();
  if (!pdu) return;
  Waveform wave =
      buildBleWaveform(view.settings(), view.samplesPerSymbol(), view.idleInterval(), *pdu);
  if (wave.samples.empty()) return;
  const int length = static_cast<int>(wave.samples.size());
  host.retune(wave.sampleRate, wave.levelOffsetDb);
  host.applyChannelFilter(wave.samples.data(), length);
  host.prepareNoise(wave.levelOffsetDb, wave.sampleRate);
  host.submitWaveform(wave.samples.data(), length, view.isSingle());
}

// At the panel's level, without impairments, in a loop.
void generateGfskBurst(ModeHost& host) {
  const Waveform wave = buildGfskBurst();
  host.retune(wave.sampleRate);
  host.submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()), false);
}

}  // namespace

void registerBleMode(ModeRegistry& registry) {
  auto* view = new ModeViewBLE;
  registry.addView(view);
  registry.setGenerator(view->modeIndex(), [view](ModeHost& host) { generateBle(*view, host); });
  registry.setGenerator(burstModeIndex, generateGfskBurst);
}

// SPDX-License-Identifier: MIT
// The IEEE 802.11a mode as a unit: view and generator; it answers no remote rows.
#include "wireless/wlan_nonht/wlan_non_ht_unit.h"

#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "wireless/wlan_nonht/mode_view_wlan_non_ht.h"

#include <climits>

namespace {

// The frame is set to -6 dB RMS; the panel's level goes to the device uncorrected.
constexpr double framePowerDb = -6.0;

// Runs on the streaming thread: the frame rebuilt from the controls, played in a loop or once a
// trigger. A source with no bit to repeat builds nothing, and nothing plays.
void generateWlanNonHt(const ModeViewWLANNonHT& view, ModeHost& host) {
  ComplexVector samples = view.generateFrame();
  if (samples.empty() || samples.size() > static_cast<size_t>(INT_MAX)) return;
  const double rate = view.sampleRate();
  host.retune(rate);
  host.applyChannelFilter(samples.data(), static_cast<int>(samples.size()));
  host.prepareNoise(framePowerDb, rate);
  host.submitWaveform(samples.data(), static_cast<int64_t>(samples.size()), view.isSingle());
}

}  // namespace

void registerWlanNonHtMode(ModeRegistry& registry) {
  auto* view = new ModeViewWLANNonHT;
  registry.addView(view);
  registry.setGenerator(view->modeIndex(),
                        [view](ModeHost& host) { generateWlanNonHt(*view, host); });
}

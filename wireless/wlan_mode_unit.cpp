// SPDX-License-Identifier: MIT
// What the three WLAN units share as units: one generator and one registration.
#include "wireless/wlan_mode_unit.h"

#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "wireless/mode_view_wlan.h"

#include <climits>

void generateWlan(const ModeViewWLAN& view, ModeHost& host) {
  ComplexVector samples = view.generateFrame();
  if (samples.empty() || samples.size() > static_cast<size_t>(INT_MAX)) return;
  const double rate = view.sampleRate();
  host.retune(rate);
  host.applyChannelFilter(samples.data(), static_cast<int>(samples.size()));
  // The frame is set to -6 dB RMS; the panel's level goes to the device uncorrected.
  host.prepareNoise(wlanFrameLevelDb, rate);
  host.submitWaveform(samples.data(), static_cast<int64_t>(samples.size()), view.isSingle());
}

void registerWlanView(ModeRegistry& registry, ModeViewWLAN* view) {
  registry.addView(view);
  registry.setGenerator(view->modeIndex(), [view](ModeHost& host) { generateWlan(*view, host); });
}

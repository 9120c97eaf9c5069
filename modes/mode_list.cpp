// SPDX-License-Identifier: MIT
// Every mode unit of the instrument, in the order of the mode list.
#include "modes/mode_list.h"

#include "arb/arb_mode/arb_unit.h"
#include "arb/streaming/streaming_unit.h"
#include "digital/digital_mod/digital_mod_unit.h"
#include "modes/am_fm/am_fm_unit.h"
#include "modes/awgn/awgn_unit.h"
#include "modes/multitone/multitone_unit.h"
#include "modes/pulse/pulse_unit.h"
#include "modes/ramp_sweep/ramp_sweep_unit.h"
#include "modes/step_sweep/step_sweep_unit.h"
#include "wireless/ble/ble_unit.h"
#include "wireless/wlan_ht/wlan_ht_unit.h"
#include "wireless/wlan_nonht/wlan_non_ht_unit.h"
#include "wireless/wlan_vht/wlan_vht_unit.h"

void registerModeUnits(ModeRegistry& registry) {
  registerAmFmModes(registry);
  registerPulseMode(registry);
  registerMultitoneMode(registry);
  registerStepSweepMode(registry);
  registerRampSweepMode(registry);
  registerAwgnMode(registry);
  registerDigitalModMode(registry);
  registerBleMode(registry);
  registerWlanNonHtMode(registry);
  registerWlanHtMode(registry);
  registerWlanVhtMode(registry);
  registerArbMode(registry);
  registerStreamingMode(registry);
}

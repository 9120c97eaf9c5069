// SPDX-License-Identifier: MIT
// The IEEE 802.11a mode as a unit: view and generator; it answers no remote rows.
#include "wireless/wlan_nonht/wlan_non_ht_unit.h"

#include "wireless/wlan_mode_unit.h"
#include "wireless/wlan_nonht/mode_view_wlan_non_ht.h"

void registerWlanNonHtMode(ModeRegistry& registry) {
  registerWlanView(registry, new ModeViewWLANNonHT);
}

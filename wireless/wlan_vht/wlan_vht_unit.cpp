// SPDX-License-Identifier: MIT
// The IEEE 802.11ac mode as a unit: view and generator; it answers no remote rows.
#include "wireless/wlan_vht/wlan_vht_unit.h"

#include "wireless/wlan_mode_unit.h"
#include "wireless/wlan_vht/mode_view_wlan_vht.h"

void registerWlanVhtMode(ModeRegistry& registry) {
  registerWlanView(registry, new ModeViewWLANVHT);
}

// SPDX-License-Identifier: MIT
// The IEEE 802.11n mode as a unit: view and generator; it answers no remote rows.
#include "wireless/wlan_ht/wlan_ht_unit.h"

#include "wireless/wlan_ht/mode_view_wlan_ht.h"
#include "wireless/wlan_mode_unit.h"

void registerWlanHtMode(ModeRegistry& registry) { registerWlanView(registry, new ModeViewWLANHT); }

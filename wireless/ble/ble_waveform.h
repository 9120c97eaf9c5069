// SPDX-License-Identifier: MIT
// GFSK samples of modulation index 0.5: a Bluetooth LE packet and its idle time.
#pragma once

#include "modes/mode_types.h"
#include "wireless/ble/ble_packet_bits.h"

#include <cstdint>
#include <vector>

// The packet of `pduBits` at samplesPerSymbol x 1e6 samples a second (twice that for LE 2M):
// +-0.25 impulses, shaped circularly by a BT 0.5 Gaussian of 8 x sps + 1 taps that sum to 1
// (the packet's end leaks into its start), turned into per-sample rotors and multiplied up in
// float from the first rotor on. levelOffsetDb is the packet's mean power, taken before the
// idle zeros are appended. No samples for a packet that can't be built, sps outside 1 to 16,
// or more samples than an int counts.
Waveform buildBleWaveform(const BleSettings& settings, int samplesPerSymbol, double idleSeconds,
                          const std::vector<uint8_t>& pduBits);

// SPDX-License-Identifier: MIT
// The settings of one retune of the device.
#pragma once

struct TuneRecord {
  double frequency = 0.0;   // Hz
  double level = 0.0;       // dBm of a full-scale sample
  double sampleRate = 0.0;  // samples a second
  double reserved1 = 0.0;   // two further values that no generator fills
  double reserved2 = 0.0;
};

// 0 internal, 1 external reference.
enum KrtTimebaseState { KrtTimebaseInternal = 0, KrtTimebaseExternal = 1 };

// SPDX-License-Identifier: MIT
// What the device session, the submit loop and the generators need of the impairments, free
// of widgets.
#pragma once

#include "dsp/sample.h"

class ImpairmentStage {
public:
  virtual ~ImpairmentStage() = default;

  // Corrections applied at each retune.
  virtual double frequencyOffset() const = 0;   // Hz, added to the carrier
  virtual double sampleRateFactor() const = 0;  // scales the rate told to the device
  virtual bool lowSpurMode() const = 0;         // the device's digital tuning flag

  // For the generators that honour the impairments, on the streaming thread, in this order
  // once a build: the channel filter over the whole waveform (when enabled), then the noise
  // record below the signal's mean power in dB (when AWGN is on). A stage without either
  // leaves the samples as they are.
  virtual void applyChannelFilter(Sample* samples, int length) {}
  virtual void prepareNoise(double signalPowerDb, double sampleRateHz) {}

  // Passes one chunk on its way to the device; `in` and `out` are the same array or apart.
  virtual void process(const Sample* in, Sample* out, int count) = 0;
};

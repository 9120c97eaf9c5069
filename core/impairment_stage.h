// SPDX-License-Identifier: MIT
// What the device session and the submit loop need of the impairments, free of widgets.
#pragma once

#include "dsp/sample.h"

class ImpairmentStage {
public:
  virtual ~ImpairmentStage() = default;

  // Corrections applied at each retune.
  virtual double frequencyOffset() const = 0;   // Hz, added to the carrier
  virtual double sampleRateFactor() const = 0;  // scales the rate told to the device
  virtual bool lowSpurMode() const = 0;         // the device's digital tuning flag

  // Passes one chunk on its way to the device; `in` and `out` do not overlap.
  virtual void process(const Sample* in, Sample* out, int count) = 0;
};

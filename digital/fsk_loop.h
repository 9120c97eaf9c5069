// SPDX-License-Identifier: MIT
// Continuous FSK: repetitions rotated onto each other so that the phase never jumps.
#pragma once

#include "dsp/sample.h"

#include <cstdint>
#include <vector>

// The record repeated until the buffer holds at least the truncation of rate / 100 samples
// (about 10 ms; at least one record), each repetition rotated by the phase of the sample just
// before it so that it runs on without a jump. With a gap that sample is zero, its phase 0,
// and every burst starts at the record's own phase. Empty for an empty record.
std::vector<Sample> fskLoopBuffer(const std::vector<Sample>& record, double sampleRateHz);

// dst(i) = src(i) × e^(j phase), in float; src and dst may be the same.
void rotateSamples(const Sample* src, Sample* dst, int64_t count, float phase);

// atan2(Q, I) of a sample, in float: 0 for a zero sample.
float phaseOf(Sample sample);

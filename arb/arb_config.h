// SPDX-License-Identifier: MIT
// The arb waveform saved with its rate and period, as CSV.
#pragma once

#include "dsp/sample.h"

#include <QString>

#include <vector>

// "SampleRate,<rate>", "Period,<period>", then one "I,Q" line a sample, each float in the
// shortest form that reads back the same. False when the file can't be written.
bool writeArbConfig(const QString& path, double sampleRate, int period,
                    const std::vector<Sample>& samples);

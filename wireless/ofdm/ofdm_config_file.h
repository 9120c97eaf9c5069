// SPDX-License-Identifier: MIT
// The OFDM configuration's .ini file (group "OFDM") and the waveform's CSV export.
#pragma once

#include "dsp/sample.h"
#include "wireless/ofdm/ofdm_config.h"

#include <QString>

#include <vector>

class QSettings;

// Writes "Version" 1, the grid's keys and the "Resource" array; each entry's "GuardInterval"
// carries the configuration's value, not the resource's. "Enabled" is not written.
void saveOfdmConfig(QSettings& settings, const OFDMConfig& config);
// A "Version" other than 1 changes nothing and returns false. A missing key keeps the current
// value. The resources are resized to the array, keeping the entries that are there; a new
// entry starts as a new resource, disabled. The range texts are parsed as the editors do.
// An array size beyond its limit, or negative, reads as an empty array.
bool loadOfdmConfig(QSettings& settings, OFDMConfig& config);
constexpr int maxOfdmResources = 4096;
constexpr int maxOfdmUserIq = 1 << 20;

// The name the export always writes, in the current directory.
extern const char* const ofdmWaveformFileName;
// One "I, Q" line a sample in the stream's default float form, no header; the file is
// overwritten. False, having written nothing, when it can't be opened.
bool writeOfdmCsv(const QString& path, const std::vector<Sample>& samples);

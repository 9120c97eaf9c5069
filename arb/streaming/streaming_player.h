// SPDX-License-Identifier: MIT
// The streaming mode's block loop, free of the view: files played back to back without end.
#pragma once

#include "arb/iq_file_reader.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class ModeHost;

// One row of the file list.
struct StreamFileEntry {
  int id = 0;  // unique, also the list item's user-role data
  QString path;
  int fileType = 0;         // 2 raw 16-bit, 3 raw 32-bit, 7 WAV
  int64_t sampleCount = 0;  // at the time of loading
};

// Runs on the streaming thread until the host's run flag falls or the device is lost: blocks
// of 40 ms at `sampleRate` from file to file in the entries' order and round again, scaled by
// `iqScalePercent`, through the impairments, paced by the device's queue. `showPosition` gets
// the percentage of the list played, at most every 20 ms. The files are read two blocks ahead
// on a thread of their own; nothing is allocated in the loop.
// False when there was nothing to play and the loop never started.
bool playStreamingFiles(const std::vector<StreamFileEntry>& entries, double sampleRate,
                        double iqScalePercent, ModeHost& host,
                        const std::function<void(double percent)>& showPosition);

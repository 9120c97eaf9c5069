// SPDX-License-Identifier: MIT
// What the arb views share: their "Load" rows, their logged clamps and the sequence loading.
#pragma once

#include "arb/arb_sequence.h"
#include "shell/error_queue.h"
#include "shell/message_box.h"

#include <algorithm>
#include <cmath>
#include <iterator>

// A row of a "Load" box: the value it carries and its file dialog.
struct LoadRow {
  int value;
  const char* text;
  const char* filter;
  const char* title;
};

// The row carrying `value`, or null (the empty row, 0, carries none).
template <size_t N>
const LoadRow* findLoadRow(const LoadRow (&rows)[N], int value) {
  const auto row = std::find_if(std::begin(rows), std::end(rows),
                                [value](const LoadRow& r) { return r.value == value; });
  return row == std::end(rows) ? nullptr : row;
}

// Clamps into [low, high], logging `message` with code -1 when the value moved; a NaN keeps
// `current`.
inline double clampLogged(double value, double low, double high, double current,
                          const char* message) {
  if (std::isnan(value)) return current;
  const double clamped = std::clamp(value, low, high);
  if (clamped != value) errorLogPut(-1, message);
  return clamped;
}

// Reads a ".seq" file into `sequence`; a bad header is said in a box. False for that and for a
// file that doesn't open, which is said nowhere.
inline bool loadSequenceFile(ArbSequence& sequence, const QString& path, QWidget* parent) {
  const ArbSequence::LoadResult result = sequence.load(path);
  if (result == ArbSequence::LoadResult::InvalidFormat)
    showWarning(parent, "Invalid File", "Invalid file format.");
  return result == ArbSequence::LoadResult::Loaded;
}

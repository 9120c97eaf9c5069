// SPDX-License-Identifier: MIT
// What the arb and streaming views share: their "Load" rows and their logged clamps.
#pragma once

#include "shell/error_queue.h"

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

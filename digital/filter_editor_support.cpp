// SPDX-License-Identifier: MIT
// What the two filter editor dialogs share: tap limits, cell texts, filter files, the checks.
#include "digital/filter_editor_support.h"

#include "modes/csv_table.h"
#include "shell/message_box.h"


#include <algorithm>
#include <charconv>
#include <cmath>

namespace filter_editor {

const char* const fileFilter = "CSV (*.csv *.txt)";
const char* const loadCaption = "Data File";
const char* const saveCaption = "Data File Save Name";

QString formatTap(double tap) { return QString::asprintf("%f", tap); }

QString fileTap(float tap) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, tap).ptr;
  return QString::fromLatin1(text, static_cast<int>(end - text));
}

bool readTap(const QString& text, float* tap) {
  bool ok = false;
  const double value = text.trimmed().toDouble(&ok);
  if (!ok || std::isnan(value)) return false;
  *tap = static_cast<float>(std::clamp(value, -maxTapValue, maxTapValue));
  return true;
}

bool readFilterFile(const QString& path, CsvTable* csv) {
  // A valid file has at most maxFileTaps taps and a line after them that ends the read.
  return csv->loadBounded(path, maxFileBytes, maxFileTaps + 1);
}

void warnLoadFailed(QWidget* parent) {
  showWarning(parent, "File Warning", "Unable to open file.");
}

void warnSaveFailed(QWidget* parent) {
  showWarning(parent, "File Warning", "Unable to save file.");
}

bool checkTapCount(QWidget* parent, int count) {
  if (count >= minTaps && count <= maxTaps) return true;
  showWarning(parent, "Invalid Number of Taps", "Number of taps should be between 4 and 256.");
  return false;
}

}  // namespace filter_editor

// SPDX-License-Identifier: MIT
// What the two filter editor dialogs share: tap limits, cell texts, filter files, the checks.
#include "digital/filter_editor_support.h"

#include "modes/csv_table.h"
#include "shell/message_box.h"

#include <QFile>
#include <QFileInfo>

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
  // Devices and pipes could be endless: only plain files are read, and no more than the bound.
  if (!QFileInfo(path).isFile()) return false;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || file.size() > maxFileBytes) return false;
  QByteArray bytes = file.read(maxFileBytes + 1);
  if (bytes.size() > maxFileBytes) return false;
  // Lines past maxFileTaps + 1 can't change the outcome: they stay unparsed.
  int end = -1;
  for (int line = 0; line <= maxFileTaps; ++line) {
    end = bytes.indexOf('\n', end + 1);
    if (end < 0) break;
  }
  if (end >= 0) bytes.truncate(end + 1);
  csv->parse(QString::fromUtf8(bytes));
  return true;
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

// SPDX-License-Identifier: MIT
// Custom modulation files: a ModulationMap as CSV rows, read with bounds and written back.
#include "digital/modulation_csv.h"

#include "modes/csv_table.h"

#include <charconv>
#include <cmath>
#include <limits>

using namespace modulation_csv;

namespace {

// Version, States, Differential, Diff States and OffsetQ around the two lists.
constexpr int maxFileLines = 5 + maxStates + maxOffsets;

QString field(const CsvTable& csv, int row, int column) { return csv.text(row, column).trimmed(); }

bool readInt(const CsvTable& csv, int row, int column, int* value) {
  bool ok = false;
  const int read = field(csv, row, column).toInt(&ok, 10);
  if (ok) *value = read;
  return ok;
}

// A labelled count of 0 .. limit.
bool readCount(const CsvTable& csv, int row, const char* label, int limit, int* count) {
  return field(csv, row, 0) == QLatin1String(label) && readInt(csv, row, 1, count) && *count >= 0 &&
         *count <= limit;
}

bool readFlag(const CsvTable& csv, int row, const char* label, bool* flag) {
  if (field(csv, row, 0) != QLatin1String(label)) return false;
  const QString text = field(csv, row, 1).toLower();
  *flag = text == "true";
  return *flag || text == "false";
}

// A finite number that a float can hold; words, NaN and infinities are refused.
bool readFloat(const CsvTable& csv, int row, int column, float* value) {
  bool ok = false;
  const double read = field(csv, row, column).toDouble(&ok);
  if (!ok || !(std::fabs(read) <= std::numeric_limits<float>::max())) return false;
  *value = static_cast<float>(read);
  return true;
}

QString shortestText(float value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value).ptr;
  return QString::fromLatin1(text, static_cast<int>(end - text));
}

}  // namespace

bool modulationFromCsv(const CsvTable& csv, ModulationMap& map) {
  int version = 0;
  if (field(csv, 0, 0) != "Version" || !readInt(csv, 0, 1, &version) || version != 1) return false;
  ModulationMap read;
  int count = 0;
  if (!readCount(csv, 1, "States", maxStates, &count)) return false;
  int row = 2;
  read.states.reserve(static_cast<size_t>(count));
  for (int end = row + count; row < end; ++row) {
    float i = 0.0f, q = 0.0f;
    if (!readFloat(csv, row, 0, &i) || !readFloat(csv, row, 1, &q)) return false;
    read.states.emplace_back(i, q);
  }
  if (!readFlag(csv, row++, "Differential", &read.differential)) return false;
  if (read.differential) {
    if (!readCount(csv, row++, "Diff States", maxOffsets, &count)) return false;
    read.diffStates.reserve(static_cast<size_t>(count));
    for (int end = row + count; row < end; ++row) {
      int offset = 0;
      if (!readInt(csv, row, 0, &offset)) return false;
      read.diffStates.push_back(offset);
    }
  }
  if (!readFlag(csv, row, "OffsetQ", &read.offsetQ)) return false;
  map = std::move(read);
  return true;
}

CsvTable modulationToCsv(const ModulationMap& map) {
  CsvTable csv;
  int row = 0;
  auto put = [&csv, &row](const QVariant& first, const QVariant& second) {
    csv.setCell(row, 0, first);
    if (second.isValid()) csv.setCell(row, 1, second);
    ++row;
  };
  auto flag = [](bool value) { return QString(value ? "true" : "false"); };
  put("Version", 1);
  put("States", static_cast<int>(map.states.size()));
  for (const Sample& point : map.states)
    put(shortestText(point.real()), shortestText(point.imag()));
  put("Differential", flag(map.differential));
  if (map.differential) {
    put("Diff States", static_cast<int>(map.diffStates.size()));
    for (int32_t offset : map.diffStates) put(offset, QVariant());
  }
  put("OffsetQ", flag(map.offsetQ));
  return csv;
}

bool readModulationCsv(const QString& path, ModulationMap& map) {
  CsvTable csv;
  return csv.loadBounded(path, maxFileBytes, maxFileLines) && modulationFromCsv(csv, map);
}

bool writeModulationCsv(const QString& path, const ModulationMap& map) {
  return modulationToCsv(map).save(path);
}

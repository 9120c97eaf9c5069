// SPDX-License-Identifier: MIT
// Custom modulation files: a ModulationMap as CSV rows, read with bounds and written back.
#pragma once

#include "digital/modulation_map.h"

#include <QString>

class CsvTable;

// Rows of a file, in order:
//   "Version",1
//   "States",N            then N rows of I,Q
//   "Differential",true|false
//   "Diff States",M       then M rows of one offset, only when differential
//   "OffsetQ",true|false
namespace modulation_csv {

// Bounds of what a file may bring; beyond them it is refused like any other bad file. 16 times
// the largest built-in map (4096 points) in either list, and room for both in text.
constexpr int maxStates = 65536;
constexpr int maxOffsets = 65536;
constexpr qint64 maxFileBytes = qint64{4} << 20;

}  // namespace modulation_csv

// The map of `csv`; false, with `map` unchanged, unless the version is 1 and every row is in
// place: labels, counts within the bounds, finite float points, int offsets, booleans.
bool modulationFromCsv(const CsvTable& csv, ModulationMap& map);
// The rows of `map`; the offsets only when it is differential. Points in the shortest text
// that reads back as the same float.
CsvTable modulationToCsv(const ModulationMap& map);

// The file at `path` through modulationFromCsv; false, with `map` unchanged, also for what
// isn't a plain readable file or is larger than maxFileBytes.
bool readModulationCsv(const QString& path, ModulationMap& map);
// False when the file can't be written.
bool writeModulationCsv(const QString& path, const ModulationMap& map);

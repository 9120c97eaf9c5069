// SPDX-License-Identifier: MIT
// What the two filter editor dialogs share: tap limits, cell texts, filter files, the checks.
#pragma once

#include <QString>

class CsvTable;
class QWidget;

namespace filter_editor {

constexpr double maxTapValue = 1024.0;  // taps are limited to -1024 .. 1024
constexpr int minTaps = 4;
constexpr int maxTaps = 256;
// Bounds of a filter file, beyond which it is refused as one that can't be opened: its size,
// and the taps it gives (64 times what a dialog accepts; a table of many more would take
// seconds and hundreds of MiB to build).
constexpr qint64 maxFileBytes = 1 << 20;
constexpr int maxFileTaps = 16384;

extern const char* const fileFilter;   // "CSV (*.csv *.txt)"
extern const char* const loadCaption;  // "Data File"
extern const char* const saveCaption;  // "Data File Save Name"

// A tap as the table shows it: "%f".
QString formatTap(double tap);
// A tap as the files hold it: the shortest text that reads back as the same float.
QString fileTap(float tap);
// A number from a cell or file field, limited to -1024 .. 1024 (infinities included). False,
// with *tap unchanged, for text that isn't a number (empty, words, NaN).
bool readTap(const QString& text, float* tap);

// Reads the CSV file at `path` into `csv`, its first maxFileTaps + 1 lines only. False, with
// `csv` unchanged, for what isn't a plain file, can't be opened, or is larger than maxFileBytes.
// A caller that reads more than maxFileTaps taps from it refuses the file.
bool readFilterFile(const QString& path, CsvTable* csv);

// The warnings of the dialogs, through showWarning.
void warnLoadFailed(QWidget* parent);
void warnSaveFailed(QWidget* parent);
// True for minTaps .. maxTaps taps; otherwise warns "Invalid Number of Taps" and is false.
bool checkTapCount(QWidget* parent, int count);

}  // namespace filter_editor

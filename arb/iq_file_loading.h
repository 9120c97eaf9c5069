// SPDX-License-Identifier: MIT
// Whole files read into memory, for the arb mode and the sequence editor.
#pragma once

#include "arb/iq_file_reader.h"

#include <memory>
#include <vector>

// The kinds of file of the "Load" boxes, by the value their row carries.
enum IQFileKind {
  KindCsv = 1,
  KindBinary16 = 2,
  KindBinary32 = 3,
  KindMidasBlue = 4,
  KindWav = 7,
  KindSequence = 8,
  KindSigMF = 9,
};

// A block reader for a file of `kind`: raw 16-bit, raw float, WAV or SigMF; null for another
// kind (CSV and Midas Blue files are read whole, by other means).
std::unique_ptr<IQFileReader> streamReaderFor(int kind);

// Every sample an open reader gives from where it stands, at most `limit`, read in blocks of
// 2^20 samples on a thread of its own, two blocks ahead; not for CSV, whose reader gives its
// samples whole.
std::vector<Sample> readAllSamples(IQFileReader& reader, int64_t limit);

// The samples of a whole file of `kind` (not a sequence), at most `limit`: a CSV file up to
// its first bad line, a Midas Blue file whatever its rate. False, and `out` untouched, when the
// file doesn't open.
bool readWholeFile(int kind, const QString& path, int64_t limit, std::vector<Sample>& out);

// SPDX-License-Identifier: MIT
// The text forms of the OFDM editors: integer ranges such as "-26:-22,1:6" and I/Q lists.
#pragma once

#include "dsp/sample.h"

#include <QString>

#include <vector>

// Parts split at "," (empty ones dropped, blanks removed); a part is one decimal integer or
// a:b for a to b inclusive. A part b:a with b above a, with three pieces or a piece that is no
// integer ends the parse as invalid. Whatever was collected is sorted with duplicates removed.
// A part spanning more than maxRangeSpan integers, or a list passing maxRangeValues, is refused
// like a bad part: no grid comes near, and an unbounded text would exhaust memory.
bool parseRange(const QString& text, std::vector<int>& list);
constexpr long long maxRangeSpan = 1 << 20;
constexpr size_t maxRangeValues = size_t{1} << 22;

// A comma-separated list of floats taken in turn as I, Q, I, Q; empty parts are dropped and an
// odd count leaves the last Q at 0. A part that is no number makes it invalid: `values` then
// holds the pairs before it.
bool parseIqList(const QString& text, std::vector<Sample>& values);

// The list as parseIqList reads it back: "I, Q, I, Q", with the shortest float text.
QString iqListText(const std::vector<Sample>& values);

// SPDX-License-Identifier: MIT
// Word tables of the remote interface (enum values as text and back) and the reply helpers.
#pragma once

#include <QString>

#include <initializer_list>
#include <vector>

class Scpi;

struct ScpiWordEntry {
  int value;
  std::vector<const char*> in;  // words the reader accepts, lower case
  const char* out;              // the word the formatter writes
};

struct ScpiWordTable {
  const char* failureIn;   // logged with code -2 when a word is not in the table
  const char* failureOut;  // answered for a value that has no word
  std::vector<ScpiWordEntry> entries;
};

namespace scpiWords {
extern const ScpiWordTable modulationType;
extern const ScpiWordTable filterType;
extern const ScpiWordTable modulationShape;
extern const ScpiWordTable multitonePhase;
extern const ScpiWordTable pnSequence;
extern const ScpiWordTable referenceSource;
extern const ScpiWordTable stepSweepType;
extern const ScpiWordTable triggerType;
}  // namespace scpiWords

// Reads the next parameter as a word of `table`. No parameter: false, silently. A word that
// is not in the table: code -2 with the table's failure text, false.
bool readScpiWord(Scpi& scpi, const ScpiWordTable& table, int& value);
// The word of `value`, or the table's failure text.
QString scpiWordText(const ScpiWordTable& table, int value);

void addIntResponse(Scpi& scpi, int value);
// The toolkit's default text of a double: shortest form that reads back the same.
void addDoubleResponse(Scpi& scpi, double value);
void addBoolResponse(Scpi& scpi, bool value);

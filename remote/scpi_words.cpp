// SPDX-License-Identifier: MIT
// Word tables of the remote interface and the reply helpers.
#include "remote/scpi_words.h"

#include "remote/scpi.h"
#include "shell/error_queue.h"

#include <QVariant>

namespace scpiWords {

// Value 12 is written "qam1024" but read only as "qam1025", and 13 has no word: clients
// that echo the reply get the failure, as the instrument always answered.
const ScpiWordTable modulationType{"Expected digital mod type",
                                   "Unknown digital mod type",
                                   {{0, {"bpsk"}, "bpsk"},
                                    {1, {"dbpsk"}, "dbpsk"},
                                    {2, {"qpsk"}, "qpsk"},
                                    {3, {"dqpsk"}, "dqpsk"},
                                    {4, {"oqpsk"}, "oqpsk"},
                                    {5, {"p4dqpsk"}, "p4dqpsk"},
                                    {6, {"psk8"}, "psk8"},
                                    {7, {"d8psk"}, "d8psk"},
                                    {8, {"psk16"}, "psk16"},
                                    {9, {"qam16"}, "qam16"},
                                    {10, {"qam64"}, "qam64"},
                                    {11, {"qam256"}, "qam256"},
                                    {12, {"qam1025"}, "qam1024"},
                                    {14, {"ask"}, "ask"},
                                    {15, {"fsk2"}, "fsk2"},
                                    {16, {"fsk4"}, "fsk4"},
                                    {17, {"fsk8"}, "fsk8"},
                                    {18, {"fsk16"}, "fsk16"},
                                    {19, {"cust", "custom"}, "custom"}}};

const ScpiWordTable filterType{"Expected filter type",
                               "Unknown filter type",
                               {{0, {"rect", "rectangle"}, "rectangle"},
                                {1, {"nyq", "nyquist"}, "nyquist"},
                                {2, {"rnyq", "rnyquist"}, "rnyquist"},
                                {3, {"gaus", "gaussian"}, "gaussian"},
                                {4, {"cust", "custom"}, "custom"}}};

const ScpiWordTable modulationShape{"Expected modulation shape",
                                    "Unknown modulation shape",
                                    {{0, {"sine"}, "sine"},
                                     {1, {"squ", "square"}, "square"},
                                     {2, {"tri", "triangle"}, "triangle"},
                                     {3, {"ramp"}, "ramp"}}};

const ScpiWordTable multitonePhase{"Expected multi-tone phase",
                                   "Unknown multi-tone phase",
                                   {{0, {"fix", "fixed"}, "fixed"},
                                    {1, {"rand", "random"}, "random"},
                                    {2, {"para", "parabolic"}, "parabolic"}}};

const ScpiWordTable pnSequence{"Expected PN sequence",
                               "Unknown PN sequence",
                               {{7, {"pn7"}, "pn7"},
                                {9, {"pn9"}, "pn9"},
                                {15, {"pn15"}, "pn15"},
                                {21, {"pn21"}, "pn21"},
                                {-1, {"cust", "custom"}, "custom"}}};

const ScpiWordTable referenceSource{
    "Expected reference oscillator source",
    "Unknown reference oscillator",
    {{0, {"int", "internal"}, "internal"}, {1, {"ext", "external"}, "external"}}};

// "sweep sweep" is the instrument's own wording.
const ScpiWordTable stepSweepType{"Expected step sweep type",
                                  "Unknown sweep sweep type",
                                  {{0, {"freq"}, "freq"}, {1, {"freqampl"}, "freqampl"}}};

const ScpiWordTable triggerType{
    "Expected trigger type",
    "Unknown trigger type",
    {{0, {"cont", "continuous"}, "continuous"}, {1, {"sing", "single"}, "single"}}};

}  // namespace scpiWords

bool readScpiWord(Scpi& scpi, const ScpiWordTable& table, int& value) {
  QString word;
  if (!scpi.nextWord(word, true)) return false;
  for (const ScpiWordEntry& entry : table.entries)
    for (const char* accepted : entry.in)
      if (word == QLatin1String(accepted)) {
        value = entry.value;
        return true;
      }
  errorLogPut(-2, table.failureIn);
  return false;
}

QString scpiWordText(const ScpiWordTable& table, int value) {
  for (const ScpiWordEntry& entry : table.entries)
    if (entry.value == value) return entry.out;
  return table.failureOut;
}

void addIntResponse(Scpi& scpi, int value) { scpi.addResponse(QString::number(value)); }

void addDoubleResponse(Scpi& scpi, double value) { scpi.addResponse(QVariant(value).toString()); }

void addBoolResponse(Scpi& scpi, bool value) { scpi.addResponse(value ? "1" : "0"); }

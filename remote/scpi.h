// SPDX-License-Identifier: MIT
// SCPI text protocol engine: line framing, command matching, typed parameters and replies.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

// One keyword of a compiled command pattern.
struct ScpiKeyword {
  QString shortForm;           // upper-case letters of the pattern keyword, lower-cased
  QString longForm;            // the whole pattern keyword, lower-cased
  bool optional = false;       // written with a leading "&"
  bool numericSuffix = false;  // written with a trailing "#"
};

// One compiled row of the command table.
struct ScpiCommandEntry {
  std::vector<ScpiKeyword> keywords;  // in pattern order; a query ends with the keyword "?"
  int id = 0;                         // command number
};

// One row of a static command table: pattern text and command number.
struct ScpiCommandSpec {
  const char* pattern;
  int id;
};

// The instrument's 171 command patterns, numbered 1 to 171 in order. Row order matters:
// the first row that matches a header wins.
constexpr int scpiCommandCount = 171;
extern const ScpiCommandSpec scpiCommandTable[scpiCommandCount];

// Cuts received text into lines and ";"-separated commands, matches each against the table
// and calls the one handler, which reads parameters and answers through addResponse. The
// answers of a line go to the socket as one write, joined by ";" and ended by a line feed.
// Lives on the user interface thread; the handler runs inside feed().
class Scpi {
public:
  using Handler = std::function<void(Scpi*)>;

  Scpi();
  // Compiles another table; tests use this for patterns the instrument's table lacks ("#").
  Scpi(const ScpiCommandSpec* table, int count);

  void setHandler(Handler newHandler);
  // Non-owning; null when no client is connected. An unfinished line is kept across a change.
  // Replies of lines fed before a change go nowhere: a client that left while its command ran
  // (in a nested event loop) leaves nothing for the next one.
  void setSocket(QIODevice* newSocket);

  // Appends text; runs every line completed by a line feed. Carriage returns are dropped.
  void feed(const QString& text);
  // Runs one line without its line feed. Without a handler a matched command throws
  // std::bad_function_call; feed() swallows that and goes on with the next line.
  void parseLine(const QString& line);

  // Number of the row that matched the command being handled.
  int commandId() const { return matchedId; }
  // One entry per matched "#" keyword, -1 where the header gave no digits.
  const QList<int>& matchedSuffixes() const { return numericSuffixes; }
  // Parameters of the command being handled that no reader has consumed yet.
  int parameterCount() const { return parameters.size(); }
  // Characters of the unfinished line held for the next feed.
  int pendingLength() const { return lineBuffer.size(); }

  // Appends one answer to the command's reply, after a "," if it already holds one.
  void addResponse(const QString& text);

  // Readers of the first unconsumed parameter: false when none is left or it doesn't convert;
  // only a successful read consumes it.
  bool nextBlock(QByteArray& block);  // "#", digit n, n count digits, then the bytes
  bool nextBool(bool& value);         // "on", "off", "1", "0"
  bool nextDouble(double& value);     // finite plain number; writes the value even when failing
  bool nextString(QString& value);    // in double quotes, not unescaped
  bool nextFrequency(double& hertz);  // number with "hz", "k", "m" (mega) or "g" units
  bool nextInt(int& value);           // base 10; writes the value even when failing
  bool nextWord(QString& word, bool lowerCase);  // as it stands; fails only when none is left
  bool nextTime(double& seconds);  // number with "s", "ms", "us" units, microseconds bare

  // Look at the first parameter without consuming it.
  bool isUp() const;
  bool isDown() const;
  bool isMin() const;
  bool isMax() const;

private:
  void compile(const ScpiCommandSpec* table, int count);
  void runBufferedLine(quint64 generation);
  void runLine(const QString& line, quint64 generation);
  void runSegment(const QString& segment, QStringList& path);
  const ScpiCommandEntry* findRow(const QStringList& path, const QString& header,
                                  QList<int>& suffixes) const;
  void consumeParameter() { parameters.removeFirst(); }
  QString firstParameterKey() const;  // trimmed and lower-cased; empty when none is left

  Handler handler;
  std::vector<ScpiCommandEntry> commands;
  QStringList parameters;
  QList<int> numericSuffixes;
  int matchedId = 0;  // the command number commandId() reports
  QIODevice* socket = nullptr;
  quint64 socketGeneration = 0;  // counts the changes of socket
  QString lineBuffer;
  QByteArray reply;
  QByteArray output;
};

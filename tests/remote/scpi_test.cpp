// SPDX-License-Identifier: MIT
// Scpi: lines in, exact bytes out; which row matched, the path rule, readers and framing.
#include "remote/scpi.h"
#include "remote/scpi_words.h"
#include "scpi_rig.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>
#include <vector>

namespace {

struct LineCase {
  const char* in;
  const char* out;  // exact bytes on the socket
  const char* log;  // rows that matched, with their parameters
};

TEST(Scpi, LinesMatchRowsAndJoinReplies) {
  const LineCase cases[] = {
      {"*IDN?\n", "q1\n", "1"},
      {"*IDN ?\n", "", ""},  // the blank cuts the "?" off the header
      {"FREQU 1e9\n", "", ""},
      {"FREQ\t1e9\n", "", ""},
      {"FREQ 1,,2\n", "", "48(1)()(2)"},
      {"FREQ \"a;b,c\"\n", "", "48(\"a)"},  // quotes protect neither ";" nor ","
      {":RAMP:SWE:PER?\n", "", ""},         // a row without "?" takes no query
      {":RAD:CUST:FILT:LEN 8;LENG?\n", "q141\n", "140(8) 141"},
      // The path after a row ends before its last keyword, optional or not.
      {":SOUR:AM:DEPT 50;FREQ 1k\n", "", "62(50)"},
      {":SOUR:AM:DEPT 50;LIN 5\n", "", "62(50) 62(5)"},
      {":SOUR:AM:DEPT 50;:FREQ 1k\n", "", "62(50) 48(1k)"},
      {"FREQ 1e9;POW -10;*IDN?\n", "q1\n", "48(1e9) 52(-10) 1"},
      {":SYST:ERR?;COUN?\n", "q10;q9\n", "10 9"},
      {"FREQ?;BOGUS;POW?\n", "q49;;q53\n", "49 53"},
      // Silence after an answer leaves a ";"; silence before the first answer leaves nothing.
      {"FREQ?;POW 1\n", "q49;\n", "49 52(1)"},
      {"POW 1;FREQ?\n", "q49\n", "52(1) 49"},
      {"  ; \t;\n", "", ""},
  };
  for (const LineCase& c : cases) {
    ScpiRig rig;
    EXPECT_EQ(rig.send(QString::fromUtf8(c.in)), QByteArray(c.out)) << c.in;
    EXPECT_EQ(rig.takeLog(), QString::fromUtf8(c.log)) << c.in;
  }
}

// Headers built from the pattern text: long and short forms, with and without the optional
// keywords, in both cases.
TEST(Scpi, EveryRowMatchesItsOwnForms) {
  ScpiRig rig;
  for (const ScpiCommandSpec& command : scpiCommandTable) {
    QString pattern = QString::fromLatin1(command.pattern);
    const bool query = pattern.endsWith(QLatin1Char('?'));
    if (query) pattern.chop(1);
    QStringList longAll, shortAll, longMandatory, shortMandatory;
    for (QString keyword : pattern.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
      const bool optional = keyword.startsWith(QLatin1Char('&'));
      keyword.remove(QLatin1Char('&'));
      const QString shortForm = QString(keyword).remove(QRegularExpression("[a-z]"));
      longAll << keyword.toUpper();
      shortAll << shortForm.toLower();
      if (optional) continue;
      longMandatory << keyword.toLower();
      shortMandatory << shortForm;
    }
    // 119 repeats 118's text; 165 and 166 end in digits, which no keyword of the table takes.
    int expected = command.id == 119 ? 118 : command.id;
    if (command.id == 165 || command.id == 166) expected = 0;
    for (const QStringList& header : {longAll, shortAll, longMandatory, shortMandatory}) {
      const QString line =
          QLatin1Char(':') + header.join(QLatin1Char(':')) + (query ? "?\n" : "\n");
      const QByteArray reply = query && expected ? "q" + QByteArray::number(expected) + "\n" : "";
      EXPECT_EQ(rig.send(line), reply) << qPrintable(line);
      EXPECT_EQ(rig.takeLog(), expected ? QString::number(expected) : QString())
          << qPrintable(line);
    }
  }
}

TEST(Scpi, NumericSuffixesAndFirstRowWins) {
  const ScpiCommandSpec table[] = {{"MEASure#:VOLTage#?", 1},
                                   {"&SOURce#:FREQuency", 2},
                                   {"&SOURce:LEVel", 3},
                                   {"&SOURce:LEVel", 4},
                                   {"OUTPut#:&STATe", 5}};
  const LineCase cases[] = {
      {"MEAS2:VOLT10?\n", "q1\n", "1#2#10"},
      {"MEAS:VOLT?\n", "q1\n", "1#-1#-1"},
      {"FREQ 5\n", "", "2(5)"},  // a skipped optional keyword adds no suffix
      {"SOUR3:FREQ 5\n", "", "2#3(5)"},
      {"LEV 1\n", "", "3(1)"},
      {"SOUR2:LEV 1\n", "", ""},
      {"OUTP1;STAT\n", "", "5#1 5#-1"},  // the path holds forms, not the digits given
  };
  for (const LineCase& c : cases) {
    ScpiRig rig(table, 5);
    EXPECT_EQ(rig.send(QString::fromUtf8(c.in)), QByteArray(c.out)) << c.in;
    EXPECT_EQ(rig.takeLog(), QString::fromUtf8(c.log)) << c.in;
  }
}

// The readers, each run on the command's parameter: the value read, or "fail".
QString text(double d) { return QString::number(d, 'g', 15); }
QString text(int i) { return QString::number(i); }
QString text(bool b) { return QString::number(b); }
QString text(const QString& t) { return t; }
QString text(const QByteArray& b) { return QString::fromUtf8(b); }
template <typename T>
QString read(Scpi* s, bool (Scpi::*next)(T&)) {
  T value{};
  return (s->*next)(value) ? text(value) : QStringLiteral("fail");
}
QString frequency(Scpi* s) { return read(s, &Scpi::nextFrequency); }
QString duration(Scpi* s) { return read(s, &Scpi::nextTime); }
QString real(Scpi* s) { return read(s, &Scpi::nextDouble); }
QString integer(Scpi* s) { return read(s, &Scpi::nextInt); }
QString boolean(Scpi* s) { return read(s, &Scpi::nextBool); }
QString string(Scpi* s) { return read(s, &Scpi::nextString); }
QString block(Scpi* s) { return read(s, &Scpi::nextBlock); }
QString word(Scpi* s, bool lowerCase) {
  QString t;
  return s->nextWord(t, lowerCase) ? t : QStringLiteral("fail");
}

// Each row answers the reader's value, or "fail", then the count of parameters left: a failed
// reader keeps the parameter for the next one. An empty row sends no parameter. For a
// frequency "m" is mega, and every copy of the number goes before the unit is looked for.
TEST(Scpi, ReadersConvertOrLeaveTheParameter) {
  using Rows = std::vector<std::pair<const char*, const char*>>;
  const std::pair<QString (*)(Scpi*), Rows> groups[] = {
      {frequency, {{"", "fail,0"}, {"1 GHz", "1000000000,0"}, {"2.5mhz", "2500000,0"}}},
      {frequency, {{"5m", "5000000,0"}, {"5kh", "5000,0"}, {"-1.5 khz", "-1500,0"}, {"3", "3,0"}}},
      {frequency, {{"+2G", "2000000000,0"}, {"1e9", "1000000000,0"}, {"1e10", "fail,1"}}},
      {frequency, {{"5e", "fail,1"}, {"1 xyz", "fail,1"}, {"hz", "fail,1"}, {"-1-1", "-1,0"}}},
      {duration, {{"", "fail,0"}, {"5", "5e-06,0"}, {"5 ms", "0.005,0"}, {"1.5s", "1.5,0"}}},
      {duration, {{"2 US", "2e-06,0"}, {"1e3", "1e-06,0"}, {"-1", "fail,1"}, {"1..2s", "fail,1"}}},
      {real, {{"", "fail,0"}, {"2.5", "2.5,0"}, {"1e3", "1000,0"}, {"1 kHz", "fail,1"}}},
      {integer, {{"", "fail,0"}, {"-7", "-7,0"}, {"0x10", "fail,1"}, {"99999999999", "fail,1"}}},
      {boolean, {{"", "fail,0"}, {"ON", "1,0"}, {"off", "0,0"}, {"1", "1,0"}, {"0", "0,0"}}},
      {boolean, {{"2", "fail,1"}}},
      {string, {{"\"a b\"", "a b,0"}, {"\"\"", ",0"}, {"\"a\\\"b\"", "a\\\"b,0"}}},
      {string, {{"'x'", "fail,1"}, {"\"x", "fail,1"}}},
      {[](Scpi* s) { return word(s, false); }, {{"", "fail,0"}, {"MiXed", "MiXed,0"}}},
      {[](Scpi* s) { return word(s, true); }, {{"MiXed", "mixed,0"}}},
      {[](Scpi* s) { return text(s->isUp()); }, {{"Up", "1,1"}, {"UPP", "0,1"}}},
      {[](Scpi* s) { return text(s->isDown()); }, {{"DOWN", "1,1"}}},
      {[](Scpi* s) { return text(s->isMax()); },
       {{"", "0,0"}, {"MAXimum", "1,1"}, {"MAXI", "0,1"}}},
      {[](Scpi* s) { return text(s->isMin()); }, {{"min", "1,1"}, {"MINIMUM", "1,1"}}},
      {block, {{"", "fail,0"}, {"#15hello", "hello,0"}, {"#210abcdefghij", "abcdefghij,0"}}},
      {block, {{"#3999abc", "abc,0"}, {"#", ",0"}, {"#2-5abc", ",0"}, {"x#15hello", "fail,1"}}},
  };
  for (const auto& [reader, rows] : groups) {
    for (const auto& [parameter, out] : rows) {
      ScpiRig rig;
      rig.act = [reader = reader](Scpi* s) {
        const QString value = reader(s);  // before the count of what it left
        s->addResponse(value + QLatin1Char(',') + QString::number(s->parameterCount()));
      };
      const QString line = QStringLiteral("FREQ ") + QString::fromUtf8(parameter) + "\n";
      EXPECT_EQ(rig.send(line), QByteArray(out) + "\n") << parameter;
    }
  }
}

// The word tables read a word (short or long, any case) as the integer the enumeration
// stores, and write that integer back as its long word.
TEST(ScpiWords, ReadAndWriteTheStoredValues) {
  const struct {
    const ScpiWordTable& table;
    const char* word;
    const char* out;
  } rows[] = {
      {scpiWords::triggerType, "CONT", "0 continuous"},
      {scpiWords::triggerType, "single", "1 single"},
  };
  for (const auto& row : rows) {
    ScpiRig rig;
    rig.act = [&row](Scpi* s) {
      int value = -7;
      readScpiWord(*s, row.table, value);
      s->addResponse(QString::number(value) + " " + scpiWordText(row.table, value));
    };
    EXPECT_EQ(rig.send(QStringLiteral("FREQ ") + row.word + "\n"), QByteArray(row.out) + "\n");
  }
}

TEST(Scpi, FramingAcrossFeedsAndClients) {
  ScpiRig rig;
  EXPECT_EQ(rig.send("*ID"), QByteArray(""));
  EXPECT_EQ(rig.send("N?"), QByteArray(""));
  EXPECT_EQ(rig.send("\n"), QByteArray("q1\n"));
  EXPECT_EQ(rig.send("*IDN?\n:FREQ?;POW?\nPOW?\n"), QByteArray("q1\nq49;q53\nq53\n"));
  EXPECT_EQ(rig.send("*I\rDN?\r\nPOW?"), QByteArray("q1\n"));
  EXPECT_EQ(rig.scpi.pendingLength(), 4);
  EXPECT_EQ(rig.send("\n"), QByteArray("q53\n"));

  // The half line of a client that left becomes the head of the next client's first line.
  QBuffer next;
  next.open(QIODevice::ReadWrite);
  EXPECT_EQ(rig.send("*ID"), QByteArray(""));
  rig.scpi.setSocket(&next);
  rig.scpi.feed("N?\n");
  EXPECT_EQ(next.data(), QByteArray("q1\n"));

  // A reply with no client goes nowhere and leaves nothing behind.
  rig.scpi.setSocket(nullptr);
  rig.scpi.feed("*IDN?\n");
  rig.scpi.setSocket(&rig.socket);
  EXPECT_EQ(rig.send("POW 1\n"), QByteArray(""));
  EXPECT_EQ(rig.send("POW?\n"), QByteArray("q53\n"));
}

TEST(Scpi, HandlerFailureLosesOnlyItsLine) {
  ScpiRig rig;
  rig.scpi.setHandler(nullptr);
  EXPECT_EQ(rig.send("*IDN?\n*IDN?;POW?\n"), QByteArray(""));
  rig.scpi.setHandler([](Scpi* s) {
    s->addResponse(QString::number(s->commandId()));
    if (s->commandId() == 49) throw std::runtime_error("handler failed");
  });
  EXPECT_EQ(rig.send("*IDN?;FREQ?;POW?\n*IDN?\n"), QByteArray("1\n"));
  EXPECT_EQ(rig.send("POW?\n"), QByteArray("53\n"));  // nothing of the lost line is left behind
}

}  // namespace

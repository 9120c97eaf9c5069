// SPDX-License-Identifier: MIT
// Scpi against hostile input: random bytes, huge lines, NULs, open quotes, absurd blocks.
#include "remote/scpi.h"
#include "scpi_rig.h"

#include <gtest/gtest.h>

#include <random>

namespace {

// Puts every reader to work on every parameter, as a careless handler might.
void readEverything(Scpi* s) {
  QByteArray block;
  bool flag = false;
  double number = 0;
  int integer = 0;
  QString text;
  s->addResponse(QString::number(s->isUp() + s->isDown() + s->isMin() + s->isMax()));
  while (s->parameterCount() > 0) {
    s->nextBlock(block);
    s->nextBool(flag);
    s->nextDouble(number);
    s->nextString(text);
    s->nextFrequency(number);
    s->nextInt(integer);
    s->nextTime(number);
    s->nextWord(text, true);
  }
  s->addResponse(QString::fromUtf8(block.left(8)));
}

// Feeds in socket-sized chunks, then checks that nothing of the finished lines is held.
void feedChunked(ScpiRig& rig, const QString& text) {
  for (int at = 0; at < text.size(); at += 4096) rig.scpi.feed(text.mid(at, 4096));
  EXPECT_EQ(rig.scpi.pendingLength(), 0);
}

TEST(ScpiFuzz, RandomHugeAndMalformedLinesEndCleanly) {
  ScpiRig rig;
  rig.act = readEverything;
  std::mt19937 random(40);
  const QString scpiChars = QStringLiteral(":;,#\"'?*&  \t\r.+-eE0123456789FREQPOWSOURAMkHz\u00e9");
  for (int line = 0; line < 4000; ++line) {
    const int length = int(random() % 120);
    QString text;
    if (line % 2 == 0) {
      QByteArray bytes;
      for (int i = 0; i < length; ++i) bytes.append(char(random() % 256));
      text = QString::fromUtf8(bytes);  // keeps NULs, as a caller other than the server might
    } else {
      for (int i = 0; i < length; ++i) text += scpiChars.at(int(random() % scpiChars.size()));
    }
    text.remove(QLatin1Char('\n'));
    const int cut = length > 0 ? int(random() % uint(length)) : 0;
    rig.scpi.feed(text.left(cut));
    rig.scpi.feed(text.mid(cut) + QLatin1Char('\n'));
    ASSERT_EQ(rig.scpi.pendingLength(), 0) << line;
  }
  // Every write was one whole line.
  EXPECT_TRUE(rig.socket.data().isEmpty() || rig.socket.data().endsWith('\n'));

  // Huge and malformed lines.
  const int megabyte = 1 << 20;
  feedChunked(rig, QStringLiteral("FREQ ") + QString(megabyte, QLatin1Char('1')) + "\n");
  feedChunked(rig, QString(megabyte, QLatin1Char(';')) + "\n");
  feedChunked(rig, QStringLiteral("A:").repeated(megabyte / 2) + "?\n");
  feedChunked(rig, QStringLiteral("FREQ 1;").repeated(megabyte / 7) + "\n");
  feedChunked(rig, QStringLiteral("FREQ ") + QStringLiteral("#9").repeated(megabyte / 2) + "\n");
  feedChunked(rig, QStringLiteral("FREQ #99999999999999999999,#9\",\"open,\"\n"));
  feedChunked(rig, QStringLiteral("FREQ \"") + QString(megabyte, QLatin1Char('x')) + "\n");
  feedChunked(rig, QString(QChar(0)) + "FREQ?\0;\0\0:POW?" + QString(QChar(0)) + "\n");

  // The parser still answers normally afterwards.
  rig.act = nullptr;
  EXPECT_EQ(rig.send("*IDN?\n"), QByteArray("q1\n"));
}

}  // namespace

// SPDX-License-Identifier: MIT
// A Scpi wired to an in-memory socket and a handler that records what matched.
#pragma once

#include "remote/scpi.h"

#include <QBuffer>
#include <QStringList>

#include <functional>
#include <ostream>

// Readable failure messages for the texts and bytes the tests compare.
inline void PrintTo(const QString& text, std::ostream* os) {
  *os << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* os) {
  *os << '"' << bytes.toStdString() << '"';
}

// By default the handler logs each command as "<id>#<suffix>...(<p1>)(<p2>)...", consuming
// every parameter through nextWord, and answers "q<id>" when its row is a query. A test may
// replace that with `act`.
class ScpiRig {
public:
  explicit ScpiRig(const ScpiCommandSpec* table = scpiCommandTable, int count = scpiCommandCount)
      : scpi(table, count), table(table), count(count) {
    socket.open(QIODevice::ReadWrite);
    scpi.setSocket(&socket);
    scpi.setHandler([this](Scpi* s) { act ? act(s) : echo(s); });
  }

  // Feeds the text and returns the bytes written to the socket meanwhile.
  QByteArray send(const QString& text) {
    const int before = socket.data().size();
    scpi.feed(text);
    return socket.data().mid(before);
  }

  QString takeLog() {
    const QString text = log.join(QLatin1Char(' '));
    log.clear();
    return text;
  }

  Scpi scpi;
  QBuffer socket;
  QStringList log;
  std::function<void(Scpi*)> act;

private:
  bool isQuery(int id) const {
    for (int i = 0; i < count; ++i)
      if (table[i].id == id) return QByteArray(table[i].pattern).endsWith('?');
    return false;
  }

  void echo(Scpi* s) {
    QString entry = QString::number(s->commandId());
    for (int suffix : s->matchedSuffixes()) entry += QLatin1Char('#') + QString::number(suffix);
    QString word;
    while (s->nextWord(word, false)) entry += QLatin1Char('(') + word + QLatin1Char(')');
    log << entry;
    if (isQuery(s->commandId())) s->addResponse(QLatin1Char('q') + QString::number(s->commandId()));
  }

  const ScpiCommandSpec* table;
  int count;
};

// SPDX-License-Identifier: MIT
// Feed and match of SCPI lines against a plain split of the same bytes; the reply budget
// of the remote interface is 1 ms a line.
#include "remote/scpi.h"

#include <QIODevice>
#include <QStringList>

#include <benchmark/benchmark.h>

#include <utility>

namespace {

// A connected client that swallows every reply.
class NullSocket : public QIODevice {
public:
  NullSocket() { open(QIODevice::WriteOnly); }

protected:
  qint64 readData(char*, qint64) override { return -1; }
  qint64 writeData(const char*, qint64 length) override { return length; }
};

const QString queryLine = QStringLiteral(":FREQ?\n");
const QString longLine = QStringLiteral(
    ":SOUR:FREQ 1 GHz;POW -10;:OUTP ON;:AM:STAT ON;FREQ 1 kHz;DEPT 50;SHAP SINE;"
    ":OUTP:IMP:AWGN:SNR 30;IBW 1e6;:RAD:ARB:SRAT 1e6;TRIG:TYPE CONT;:PULM:INT:PWID 1 ms;"
    ":SYST:ERR?;*IDN?;:FREQ?;:POW?\n");

// Reads a parameter the way most rows do and answers queries with a fixed value.
void typicalHandler(Scpi* scpi) {
  double value = 0;
  if (scpi->parameterCount() > 0) {
    scpi->nextFrequency(value);
  } else {
    scpi->addResponse(QStringLiteral("1000000000"));
  }
}

// Matching alone: no parameter is read, queries answer as usual.
void matchOnlyHandler(Scpi* scpi) {
  if (scpi->parameterCount() == 0) scpi->addResponse(QStringLiteral("1000000000"));
}

void scpiFeed(benchmark::State& state, const QString& line,
              Scpi::Handler handler = typicalHandler) {
  NullSocket socket;
  Scpi scpi;
  scpi.setSocket(&socket);
  scpi.setHandler(std::move(handler));
  for (auto _ : state) scpi.feed(line);
  state.SetBytesProcessed(state.iterations() * line.size());
}

// Baseline: the same characters cut into lines and segments, with no matching at all.
void plainSplit(benchmark::State& state, const QString& line) {
  NullSocket socket;
  QString buffer;
  for (auto _ : state) {
    for (QChar c : line) {
      if (c != QLatin1Char('\n')) {
        buffer.append(c);
        continue;
      }
      const QStringList segments = buffer.split(QLatin1Char(';'), Qt::SkipEmptyParts);
      socket.write(QByteArray::number(segments.size()));
      buffer.clear();
    }
  }
  state.SetBytesProcessed(state.iterations() * line.size());
}

void BM_ScpiQuery(benchmark::State& state) { scpiFeed(state, queryLine); }
void BM_PlainSplitQuery(benchmark::State& state) { plainSplit(state, queryLine); }
void BM_ScpiLongLine(benchmark::State& state) { scpiFeed(state, longLine); }
void BM_ScpiLongLineMatchOnly(benchmark::State& state) {
  scpiFeed(state, longLine, matchOnlyHandler);
}
void BM_PlainSplitLongLine(benchmark::State& state) { plainSplit(state, longLine); }

BENCHMARK(BM_ScpiQuery);
BENCHMARK(BM_PlainSplitQuery);
BENCHMARK(BM_ScpiLongLine);
BENCHMARK(BM_ScpiLongLineMatchOnly);
BENCHMARK(BM_PlainSplitLongLine);

}  // namespace

BENCHMARK_MAIN();

// SPDX-License-Identifier: MIT
// The arb waveform saved with its rate and period, as CSV.
#include "arb/arb_config.h"

#include <QFile>
#include <QVariant>

#include <charconv>

namespace {

// Appends the float's shortest round-trip text.
void append(QByteArray& out, float value) {
  char text[32];
  const std::to_chars_result r = std::to_chars(text, text + sizeof text, value);
  out.append(text, static_cast<int>(r.ptr - text));
}

}  // namespace

bool writeArbConfig(const QString& path, double sampleRate, int period,
                    const std::vector<Sample>& samples) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
  QByteArray out = "SampleRate," + QVariant(sampleRate).toString().toUtf8() + "\nPeriod," +
                   QByteArray::number(period) + "\n";
  for (const Sample& s : samples) {
    append(out, s.real());
    out += ',';
    append(out, s.imag());
    out += '\n';
    if (out.size() > (1 << 20)) {  // written a megabyte at a time
      if (file.write(out) != out.size()) return false;
      out.clear();
    }
  }
  return file.write(out) == out.size();
}

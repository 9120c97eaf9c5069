// SPDX-License-Identifier: MIT
// The output monitor's figures saved as CSV and its plots as an image.
#include "core/output_monitor.h"

#include "shell/file_dialogs.h"
#include "shell/message_box.h"

#include <QFile>
#include <QTextStream>

#include <cmath>

namespace {

QString number(double value) { return QString::number(value, 'g', 10); }

}  // namespace

// Readouts as "# name,value" lines, then the spectrum (absolute frequency, dBFS) and the CCDF
// (dB above mean power, percent of samples above), each under its own header line, separated
// by an empty line.
bool OutputMonitor::saveCsv(const QString& path) const {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Text | QIODevice::Truncate)) return false;
  QTextStream out(&file);
  out << "# Center Frequency (Hz)," << number(centerHz) << "\n";
  out << "# Sample Rate (Hz)," << number(rateHz) << "\n";
  out << "# Bins," << spectrumAverager.bins() << "\n";
  out << "# Noise Bandwidth (bins)," << number(spectrumAverager.noiseBandwidthBins()) << "\n";
  out << "# Samples Analysed," << ccdfAccumulator.count() << "\n";
  out << "# Mean Power (dBFS)," << number(ccdfAccumulator.meanPowerDbfs()) << "\n";
  out << "# PAPR 0.01 % (dB)," << number(ccdfAccumulator.paprDb()) << "\n";
  out << "Frequency (Hz),Level (dBFS)\n";
  if (spectrumAverager.hasData()) {
    const std::vector<float> levels = spectrumAverager.levelsDbfs();
    const int bins = static_cast<int>(levels.size());
    for (int k = 0; k < bins; ++k)
      out << number(centerHz + (k - bins / 2) * rateHz / bins) << "," << levels[size_t(k)] << "\n";
  }
  out << "\nAbove Mean Power (dB),Samples Above (%)\n";
  for (const auto& [db, percent] : ccdfAccumulator.curve())
    out << QString::number(db, 'f', 2) << "," << number(percent) << "\n";
  out.flush();
  return file.error() == QFile::NoError;
}

bool OutputMonitor::savePng(const QString& path) { return grab().save(path, "PNG"); }

void OutputMonitor::saveCsvClicked() {
  const QString name = saveFileName("Save Monitor Figures", "CSV Files (*.csv)", this);
  if (!name.isEmpty() && !saveCsv(name))
    showWarning(this, "Output Monitor", "Unable to save " + name + ".");
}

void OutputMonitor::savePngClicked() {
  const QString name = saveFileName("Save Monitor Image", "Images (*.png)", this);
  if (!name.isEmpty() && !savePng(name))
    showWarning(this, "Output Monitor", "Unable to save " + name + ".");
}

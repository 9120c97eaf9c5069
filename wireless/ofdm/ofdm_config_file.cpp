// SPDX-License-Identifier: MIT
// The OFDM configuration's .ini file (group "OFDM") and the waveform's CSV export.
#include "wireless/ofdm/ofdm_config_file.h"

#include <QFile>
#include <QSettings>
#include <QTextStream>

const char* const ofdmWaveformFileName = "ofdm_waveform.csv";

namespace {

void saveResource(QSettings& s, const OFDMResource& r, double guardInterval) {
  s.setValue("Name", r.name);
  s.setValue("SymbolRange", r.symbolRange.text);
  s.setValue("SubcarrierIndices", r.subcarrierIndices.text);
  s.setValue("Modulation", r.modulation);
  s.setValue("GuardInterval", guardInterval);
  s.setValue("Scalar", r.scalar);
  s.setValue("DataType", r.dataType);
  s.beginWriteArray("UserIQ", static_cast<int>(r.userIq.size()));
  for (int i = 0; i < static_cast<int>(r.userIq.size()); ++i) {
    s.setArrayIndex(i);
    s.setValue("I", double(r.userIq[i].real()));
    s.setValue("Q", double(r.userIq[i].imag()));
  }
  s.endArray();
  s.setValue("BitSelect", r.bitSelect);
  s.setValue("UserBits", r.userBits);
}

template <class T>
void read(QSettings& s, const char* key, T& field) {
  field = s.value(key, field).template value<T>();
}

void readRange(QSettings& s, const char* key, OFDMRange& range) {
  range.setText(s.value(key, range.text).toString());
}

// A size no file of ours holds (negative, or beyond what memory allows) is read as no entries.
int arraySize(QSettings& s, const char* key, int limit) {
  const int count = s.value(QString(key) + "/size", 0).toInt();
  return count >= 0 && count <= limit ? count : 0;
}

void loadUserIq(QSettings& s, std::vector<Sample>& iq) {
  if (!s.contains("UserIQ/size")) return;
  const int count = arraySize(s, "UserIQ", maxOfdmUserIq);
  s.beginReadArray("UserIQ");
  iq.resize(count);
  for (int i = 0; i < count; ++i) {
    s.setArrayIndex(i);
    iq[i] = Sample(s.value("I", double(iq[i].real())).toFloat(),
                   s.value("Q", double(iq[i].imag())).toFloat());
  }
  s.endArray();
}

void loadResource(QSettings& s, OFDMResource& r) {
  read(s, "Name", r.name);
  readRange(s, "SymbolRange", r.symbolRange);
  readRange(s, "SubcarrierIndices", r.subcarrierIndices);
  read(s, "Modulation", r.modulation);
  read(s, "GuardInterval", r.guardInterval);
  read(s, "Scalar", r.scalar);
  read(s, "DataType", r.dataType);
  loadUserIq(s, r.userIq);
  read(s, "BitSelect", r.bitSelect);
  read(s, "UserBits", r.userBits);
}

}  // namespace

void saveOfdmConfig(QSettings& s, const OFDMConfig& config) {
  s.beginGroup("OFDM");
  s.setValue("Version", 1);
  s.setValue("FFTSize", config.fftSize);
  s.setValue("CarrierSpacing", config.carrierSpacing);
  s.setValue("GuardCarriersLeft", config.guardCarriersLeft);
  s.setValue("GuardCarriersRight", config.guardCarriersRight);
  s.setValue("SymbolCount", config.symbolCount);
  s.setValue("NullDC", config.nullDc);
  s.setValue("GuardInterval", config.guardInterval);
  s.beginWriteArray("Resource", static_cast<int>(config.resources.size()));
  for (int i = 0; i < static_cast<int>(config.resources.size()); ++i) {
    s.setArrayIndex(i);
    saveResource(s, config.resources[i], config.guardInterval);
  }
  s.endArray();
  s.endGroup();
}

bool loadOfdmConfig(QSettings& s, OFDMConfig& config) {
  s.beginGroup("OFDM");
  const int count = arraySize(s, "Resource", maxOfdmResources);
  if (s.value("Version", 1).toInt() != 1) {
    s.endGroup();
    return false;
  }
  read(s, "FFTSize", config.fftSize);
  read(s, "CarrierSpacing", config.carrierSpacing);
  read(s, "GuardCarriersLeft", config.guardCarriersLeft);
  read(s, "GuardCarriersRight", config.guardCarriersRight);
  read(s, "SymbolCount", config.symbolCount);
  read(s, "NullDC", config.nullDc);
  read(s, "GuardInterval", config.guardInterval);
  s.beginReadArray("Resource");
  std::vector<OFDMResource>& list = config.resources;
  while (static_cast<int>(list.size()) > count) list.pop_back();
  while (static_cast<int>(list.size()) < count) list.push_back(newOfdmResource(list));
  for (int i = 0; i < count; ++i) {
    s.setArrayIndex(i);
    loadResource(s, list[i]);
  }
  s.endArray();
  s.endGroup();
  return true;
}

bool writeOfdmCsv(const QString& path, const std::vector<Sample>& samples) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) return false;
  QTextStream out(&file);
  for (const Sample& v : samples) out << v.real() << ", " << v.imag() << "\n";
  return true;
}

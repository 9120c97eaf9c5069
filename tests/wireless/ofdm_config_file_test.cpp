// SPDX-License-Identifier: MIT
// Custom OFDM texts and files: range and I/Q syntax, the .ini configuration and the CSV export.
#include "arb/csv_file_reader.h"
#include "wireless/ofdm/ofdm_config_file.h"
#include "wireless/ofdm/ofdm_generator.h"
#include "wireless/ofdm/range_syntax.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace {

TEST(OfdmRangeSyntax, PartsAreFoldedSortedOrRefused) {
  struct Case {
    const char* text;
    bool valid;
    std::vector<int> list;
  };
  std::vector<int> data;
  for (int k = -26; k <= 26; ++k)
    if (k != -21 && k != -7 && k != 7 && k != 21) data.push_back(k);
  const Case cases[] = {
      {"-26:-22,-20:-8,-6:1,1:6,8:20,22:26", true, data},
      {"-6:1,1:6", true, {-6, -5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5, 6}},
      {"", true, {}},
      {" , ,,", true, {}},
      {" 1 : 3 , 2", true, {1, 2, 3}},
      {"7,-3, 7,5:5", true, {-3, 5, 7}},
      {"+4", true, {4}},
      {"9,5:3,1", false, {9}},  // the first bound above the second; later parts are not read
      {"1:2:3", false, {}},
      {"4,1:", false, {4}},
      {"2,x", false, {2}},
      {"1.5", false, {}},
      {"99999999999", false, {}},
      {"3,0:2000000", false, {3}},  // a span beyond any grid
  };
  for (const Case& t : cases) {
    std::vector<int> list{42};
    EXPECT_EQ(parseRange(t.text, list), t.valid) << t.text;
    EXPECT_EQ(list, t.list) << t.text;
  }
}

TEST(OfdmRangeSyntax, IqListsPairNumbersInTurn) {
  struct Case {
    const char* text;
    bool valid;
    std::vector<Sample> values;
  };
  const Case cases[] = {
      {"1, -2, 0.5, 4", true, {{1, -2}, {0.5f, 4}}},
      {"1,2,3", true, {{1, 2}, {3, 0}}},
      {"1,,2,", true, {{1, 2}}},
      {"", true, {}},
      {"1,2,x,4", false, {{1, 2}}},
      {"1,2,3,x", false, {{1, 2}}},
  };
  for (const Case& t : cases) {
    std::vector<Sample> values{{9, 9}};
    EXPECT_EQ(parseIqList(t.text, values), t.valid) << t.text;
    EXPECT_EQ(values, t.values) << t.text;
  }
  std::vector<Sample> back;
  const std::vector<Sample> odd{{0.1f, -3e-7f}, {1e6f, 0}};
  EXPECT_TRUE(parseIqList(iqListText(odd), back));
  EXPECT_EQ(back, odd);
}

struct IniFile {
  QTemporaryDir dir;
  QString path = dir.filePath("ofdm.ini");
};

void expectSameResource(const OFDMResource& a, const OFDMResource& b) {
  EXPECT_EQ(std::tie(a.name, a.symbolRange.text, a.symbolRange.values, a.subcarrierIndices.values,
                     a.modulation, a.dataType, a.userIq, a.bitSelect, a.userBits),
            std::tie(b.name, b.symbolRange.text, b.symbolRange.values, b.subcarrierIndices.values,
                     b.modulation, b.dataType, b.userIq, b.bitSelect, b.userBits));
}

// Written and read back into a configuration whose list is shorter: the existing entry keeps
// its enabled flag, new ones come disabled, and every resource takes the grid's guard interval.
TEST(OfdmConfigFile, RoundTripKeepsFieldsButNotTheEnabledFlags) {
  IniFile file;
  OFDMConfig saved = defaultOfdmConfig(1);
  saved.guardInterval = 0.125;
  saved.nullDc = false;
  saved.resources[0].userBits = "101";
  saved.resources[1].guardInterval = 0.4;
  {
    QSettings settings(file.path, QSettings::IniFormat);
    saveOfdmConfig(settings, saved);
  }
  OFDMConfig loaded = defaultOfdmConfig(0);
  loaded.resources[0].enabled = false;
  QSettings settings(file.path, QSettings::IniFormat);
  ASSERT_TRUE(loadOfdmConfig(settings, loaded));
  EXPECT_EQ(loaded.fftSize, saved.fftSize);
  EXPECT_EQ(loaded.symbolCount, 24);
  EXPECT_FALSE(loaded.nullDc);
  EXPECT_EQ(loaded.guardInterval, 0.125);
  ASSERT_EQ(loaded.resources.size(), 6u);
  for (size_t i = 0; i < 6; ++i) {
    expectSameResource(loaded.resources[i], saved.resources[i]);
    EXPECT_FALSE(loaded.resources[i].enabled) << i;
    EXPECT_EQ(loaded.resources[i].guardInterval, 0.125) << i;
  }
  EXPECT_EQ(loaded.resources[5].index, 5);
}

// A broken or foreign file: another version changes nothing, missing keys keep the current
// values, sizes no file of ours holds read as empty arrays.
TEST(OfdmConfigFile, BadFilesChangeOnlyWhatTheyHold) {
  struct Case {
    const char* what;
    std::vector<std::pair<const char*, QVariant>> keys;
    bool loads;
    int symbolCount;
    size_t resources;
  };
  const Case cases[] = {
      {"another version", {{"Version", 2}, {"SymbolCount", 3}}, false, 16, 1},
      {"no keys but the count", {{"SymbolCount", 3}}, true, 3, 0},
      {"keeps entries it resizes to", {{"Resource/size", 1}}, true, 16, 1},
      {"a negative array size", {{"Resource/size", -5}}, true, 16, 0},
      {"an array beyond the limit", {{"Resource/size", 1 << 30}}, true, 16, 0},
  };
  for (const Case& t : cases) {
    IniFile file;
    {
      QSettings settings(file.path, QSettings::IniFormat);
      for (const auto& key : t.keys) settings.setValue(QString("OFDM/") + key.first, key.second);
    }
    OFDMConfig config = defaultOfdmConfig(0);
    QSettings settings(file.path, QSettings::IniFormat);
    EXPECT_EQ(loadOfdmConfig(settings, config), t.loads) << t.what;
    EXPECT_EQ(config.symbolCount, t.symbolCount) << t.what;
    EXPECT_EQ(config.resources.size(), t.resources) << t.what;
    if (!config.resources.empty()) {
      EXPECT_EQ(config.resources[0].name, "Data") << t.what;
      EXPECT_TRUE(config.resources[0].enabled) << t.what;
    }
  }
}

// The arb's reader takes the export back to the same samples, to the six digits written.
TEST(OfdmExport, CsvReadsBackThroughTheArbReader) {
  QTemporaryDir dir;
  const QString path = dir.filePath(ofdmWaveformFileName);
  for (int which : {0, 1}) {
    const std::vector<Sample> samples = generateOfdm(defaultOfdmConfig(which));
    ASSERT_TRUE(writeOfdmCsv(path, samples));
    CSVFileReader reader;
    ASSERT_TRUE(reader.open(path)) << reader.errorText().toStdString();
    ASSERT_EQ(reader.data().size(), samples.size());
    for (size_t i = 0; i < samples.size(); ++i) {
      const Sample d = reader.data()[i] - samples[i];
      ASSERT_LE(std::abs(d.real()), 5e-6f * std::max(1.0f, std::abs(samples[i].real()))) << i;
      ASSERT_LE(std::abs(d.imag()), 5e-6f * std::max(1.0f, std::abs(samples[i].imag()))) << i;
    }
  }
  // An overwrite, not an append; and a path that can't be opened writes nothing.
  ASSERT_TRUE(writeOfdmCsv(path, {Sample(0.5f, -1e-5f)}));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), QByteArray("0.5, -1e-05\n"));
  EXPECT_FALSE(writeOfdmCsv(dir.path(), {Sample(1, 1)}));
}

}  // namespace

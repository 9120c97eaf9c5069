// SPDX-License-Identifier: MIT
// Preset files: round trip of the whole panel, partial and garbage files, the power-on preset.
#include "core/central_widget.h"

#include "krt/krt_ext.h"
#include "modes/mode_widget.h"
#include "panel_fixture.h"
#include "persist/paths.h"
#include "persist/preferences.h"
#include "support/events_log.h"
#include "widgets/double_edit.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <tuple>

#include <sys/stat.h>

namespace {

// A view with one control, "Value" in group "Probe", clamped to 0..10 on load.
class ProbeView : public ModeWidget {
public:
  ProbeView(const QString& name, int index) : ModeWidget(name, index), edit(new DoubleEdit(this)) {}
  void setDefaults() override { setValue(1); }
  void saveSettings(QSettings* s) override { s->setValue(modeName() + "/Value", edit->value()); }
  void loadSettings(QSettings* s) override {
    setValue(s->value(modeName() + "/Value", edit->value()).toDouble());
  }
  void setValue(double v) {
    edit->setValue(std::clamp(v, 0.0, 10.0));
    emit updated();
  }
  DoubleEdit* edit;
};

class PresetTest : public PanelFixture {
protected:
  void SetUp() override {
    PanelFixture::SetUp();
    first = new ProbeView("ProbeA", 9);
    second = new ProbeView("ProbeB", 10);
    central.addMode(first);
    central.addMode(second);
    connectDevice();
    QFile::remove(powerOnPresetPath());
  }
  void TearDown() override {
    PanelFixture::TearDown();
    QFile::remove(powerOnPresetPath());
  }

  QString path(const QString& name) const { return dir.filePath(name); }

  void write(const QString& file, const std::vector<std::pair<QString, QVariant>>& keys) {
    QSettings s(file, QSettings::IniFormat);
    for (const auto& [key, value] : keys) s.setValue(key, value);
  }

  QTemporaryDir dir;
  ProbeView* first = nullptr;
  ProbeView* second = nullptr;
  WarningRecorder recorder;
};

TEST_F(PresetTest, SaveChangeEverythingLoadRestoresIt) {
  second->enabledCheck()->click();
  central.setRFEnabled(true);
  central.setModEnabled(true);
  central.setReference(KrtTimebaseExternal);
  central.setCenterFrequency(2.5e9);
  central.setStepFrequency(5e3);
  central.setLevel(-42.25);
  central.setLevelStep(3);
  first->setValue(7);
  second->setValue(2.5);
  write(path("all.ini"), {{"Stale", 1}, {"Obsolete/Key", 2}});
  central.savePreset(path("all.ini"));
  {
    // Nothing of an older file survives, and a user preset carries no version.
    QSettings s(path("all.ini"), QSettings::IniFormat);
    EXPECT_EQ(s.allKeys().filter(QRegularExpression("Stale|Obsolete|SoftwareVersion")),
              QStringList());
  }

  first->enabledCheck()->click();
  central.presetButtonPressed();
  central.loadPreset(path("all.ini"));

  // Every value is exact in binary and survives the file unchanged.
  EXPECT_EQ(std::make_tuple(central.currentMode(), central.currentView(), central.rfEnabled(),
                            central.modEnabled(), central.referenceEnabled(), central.frequency(),
                            central.frequencyStep(), central.level(), central.levelStep(),
                            first->edit->value(), second->edit->value()),
            std::make_tuple(10, second, true, true, true, 2.5e9, 5e3, -42.25, 3.0, 7.0, 2.5));
  EXPECT_TRUE(central.isStreaming());
  EXPECT_TRUE(recorder.warnings.empty());
  // The load re-arms streaming without a restart, so settings stay pending.
  EXPECT_TRUE(central.gate().isSettingsPending());
}

TEST_F(PresetTest, PartialAndGarbageFilesMeetTheClamps) {
  const QString center = "-1,Setting clamped;Center frequency clamped";
  struct Case {
    std::vector<std::pair<QString, QVariant>> keys;
    std::array<double, 5> expected;  // frequency, its step, level, its step, the probe's value
    std::vector<QString> logged;
  };
  const std::vector<Case> cases = {
      {{{"Frequency", 1e10}, {"FrequencyStep", -1}, {"PowerLevel", 99}, {"PowerLevelStep", 500}},
       {6e9, 0, 10, 100, 1},
       {center, "-1,Setting clamped;Step frequency clamped"}},
      // Garbage reads as 0.
      {{{"Frequency", "abc"}, {"PowerLevel", "x"}, {"ProbeA/Value", "lots"}},
       {30e6, 1e6, 0, 10, 0},
       {center}},
      {{{"ProbeA/Value", 50}}, {1e9, 1e6, -20, 10, 10}, {}},
      // A NaN is no value: the control keeps its own. An infinity meets the clamp.
      {{{"Frequency", "nan"},
        {"FrequencyStep", "inf"},
        {"PowerLevel", "nan"},
        {"PowerLevelStep", "-inf"},
        {"ProbeA/Value", "nan"}},
       {1e9, 6e9, -20, 0, 1},
       {"-1,Setting clamped;Step frequency clamped"}},
  };
  for (const Case& c : cases) {
    const int index = static_cast<int>(&c - cases.data());
    SCOPED_TRACE(index);
    central.presetButtonPressed();
    errorLogClear();
    const QString file = path(QString("case%1.ini").arg(index));
    write(file, c.keys);
    central.loadPreset(file);
    const std::array<double, 5> got = {central.frequency(), central.frequencyStep(),
                                       central.level(), central.levelStep(), first->edit->value()};
    for (int i = 0; i < 5; ++i) EXPECT_DOUBLE_EQ(got[i], c.expected[i]) << i;
    ASSERT_EQ(errorLogCount(), static_cast<int>(c.logged.size()));
    for (const QString& entry : c.logged) EXPECT_EQ(errorLogNext(), entry);
  }
  // The file keeps what it held.
  EXPECT_EQ(QSettings(path("case0.ini"), QSettings::IniFormat).value("Frequency").toDouble(), 1e10);
}

// A mode index without a view changes no mode; a file that is not there changes nothing.
TEST_F(PresetTest, ModeKeysWithoutAViewAndMissingFiles) {
  first->enabledCheck()->click();
  for (int mode : {0, 12, 42, -3}) {
    SCOPED_TRACE(mode);
    write(path("mode.ini"), {{"Mode", mode}, {"Frequency", 1.5e9 + mode}});
    central.loadPreset(path("mode.ini"));
    EXPECT_EQ(central.currentMode(), 9);
    EXPECT_DOUBLE_EQ(central.frequency(), 1.5e9 + mode);
    EXPECT_TRUE(central.isStreaming());
  }
  central.loadPreset(path("absent.ini"));
  ASSERT_EQ(recorder.warnings.size(), 1u);
  EXPECT_EQ(recorder.warnings[0].title, "No Preset");
  EXPECT_EQ(recorder.warnings[0].text, "Unable to load preset.");
  EXPECT_DOUBLE_EQ(central.frequency(), 1.5e9 - 3);
  EXPECT_TRUE(central.isStreaming());
}

// The comparison of versions has its own test; the window's test loads the power-on preset
// at each connect. Here: the version written, and an older one refused with the warning.
TEST_F(PresetTest, PowerOnPresetIsCheckedForItsVersion) {
  central.setCenterFrequency(2.2e9);
  central.savePowerOnPreset();
  central.setCenterFrequency(1e9);
  {
    QSettings s(powerOnPresetPath(), QSettings::IniFormat);
    EXPECT_EQ(s.value("SoftwareVersion/Major").toInt(), 1);
    EXPECT_EQ(s.value("SoftwareVersion/Minor").toInt(), 0);
    EXPECT_EQ(s.value("SoftwareVersion/Revision").toInt(), 5);
    s.setValue("SoftwareVersion/Revision", 4);
  }
  central.loadPowerOnPreset();
  EXPECT_DOUBLE_EQ(central.frequency(), 1e9);
  ASSERT_EQ(recorder.warnings.size(), 1u);
  EXPECT_EQ(recorder.warnings[0].title, "Power On Preset");
  EXPECT_EQ(recorder.warnings[0].text,
            "Power On preset was created with an older version of KRT40 software that is not "
            "compatible with the current version.");
}

// A FIFO would block a read or a write for ever and a file of a million keys would stall both:
// presets and preferences are only opened when they are regular files of a sane size.
TEST_F(PresetTest, OnlyRegularFilesOfASaneSizeAreOpened) {
  const QString fifo = path("fifo.ini");
  ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
  QByteArray junk = "[Junk]\n";
  for (int i = 0; i < 500000; ++i) junk += "Key" + QByteArray::number(i) + "=1\n";
  const auto writeFile = [](const QString& file, const QByteArray& text) {
    QFile out(file);
    return out.open(QIODevice::WriteOnly) && out.write(text) == text.size();
  };
  const QString huge = path("huge.ini");
  ASSERT_TRUE(writeFile(huge, junk + "[General]\nFrequency=2e9\n"));
  central.loadPreset(fifo);
  central.loadPreset(huge);
  ASSERT_EQ(recorder.warnings.size(), 2u);
  EXPECT_EQ(recorder.warnings[1].text, "Unable to load preset.");
  EXPECT_DOUBLE_EQ(central.frequency(), 1e9);
  central.savePreset(fifo);  // left alone, without blocking
  central.savePreset(huge);  // replaced by a file of its own size
  EXPECT_LT(QFileInfo(huge).size(), 100000);
  EXPECT_FALSE(QFileInfo(fifo).isFile());

  // Preferences: a FIFO is passed over both ways; an oversized file is not read, then replaced.
  ASSERT_TRUE(QDir().mkpath(QFileInfo(preferencesPath()).path()));
  QFile::remove(preferencesPath());
  ASSERT_EQ(mkfifo(QFile::encodeName(preferencesPath()).constData(), 0600), 0);
  loadPreferences();
  savePreferences();
  QFile::remove(preferencesPath());
  ASSERT_TRUE(writeFile(preferencesPath(), junk + "[Preferences]\nSCPIPort=1234\n"));
  loadPreferences();
  EXPECT_EQ(preferences.scpiPort, 0);
  savePreferences();
  EXPECT_LT(QFileInfo(preferencesPath()).size(), 100000);
  QFile::remove(preferencesPath());
}

// The backend and the level calibrations reach the library at load and survive a save; keys and
// values that aren't numbers are passed over.
TEST(Preferences, BackendAndCalibrationsRoundTrip) {
  EventsLog log(eventsPath());
  ASSERT_TRUE(QDir().mkpath(QFileInfo(preferencesPath()).path()));
  QFile file(preferencesPath());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("[Preferences]\nDeviceBackend=soapy\n[LevelCalibration]\n90000001=-41.5\nfake=3\n"
             "90000002=loud\n");
  file.close();
  const QMap<int, double> calibrations{{90000001, -41.5}};
  for (int pass = 0; pass < 2; ++pass) {
    SCOPED_TRACE(pass);
    preferences = Preferences();
    log.mark();
    loadPreferences();
    EXPECT_EQ(preferences.deviceBackend, "SoapySDR");
    EXPECT_EQ(preferences.levelCalibration, calibrations);
    const auto calibrated = log.calls("krtSetLevelCalibration");
    ASSERT_EQ(calibrated.size(), 1u);
    EXPECT_EQ(calibrated[0]["args"]["serialNumber"], 90000001);
    EXPECT_EQ(calibrated[0]["args"]["offsetDb"], -41.5);
    const auto chosen = log.calls("krtSelectBackend");
    ASSERT_FALSE(chosen.empty());
    EXPECT_EQ(chosen[0]["args"]["backend"], 1);
    savePreferences();
  }
  krtSelectBackend(0);
  preferences = Preferences();
  preferences.scpiPort = 0;
  QFile::remove(preferencesPath());
}

}  // namespace

// SPDX-License-Identifier: MIT
// The multitone unit in the panel: form and defaults, remote rows 80 to 91 with the clamps and
// the product rule, the generator's retune, level correction and progress on the simulated
// device, and the "Mtone" preset group taken as it stands.
#include "modes/multitone/mode_view_multitone.h"
#include "modes/multitone/multitone_builder.h"
#include "modes/unit_panel_test.h"
#include "support/form_rows.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_list_widget.h"

#include <QProgressDialog>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

class MultitoneUnitTest : public UnitPanelTest<ModeViewMultitone> {
protected:
  bool seedEnabled() const { return view->findChildren<IntLineEdit*>().at(0)->isEnabled(); }
  // The level of the retune to `sampleRate` after a restart by `line`.
  double levelOfComb(const QString& line, double sampleRate) {
    restart(line, sampleRate);
    // The level follows the rate in a retune.
    if (!waitUntil([&] { return !played({"krtSetLevel"}).empty(); })) return std::nan("");
    return played({"krtSetLevel"})[0].second;
  }
};

TEST_F(MultitoneUnitTest, FormDefaultsAndRemoteRows) {
  EXPECT_EQ(central.findChild<MyListWidget*>()->findModeRow(4)->text(), "Multitone");
  EXPECT_EQ(formRows(*view),
            QStringList({"Enabled=QCheckBox", "Tone Phase=MyComboBox", "Seed=IntLineEdit",
                         "Tone Count=IntLineEdit", "Freq Spacing=FrequencyEdit",
                         "Notch Width=FrequencyEdit", "Fixed=0", "Random=1", "Parabolic=2"}));
  EXPECT_FALSE(seedEnabled());
  // Each setting clamps and keeps tone count x spacing within 4e7 Hz against the other.
  checkRows({
      {":MTON?;:MTON:PHAS?;:MTON:PHAS:SEED?;:MTON:NTON?;:MTON:FSP?;:MTON:FNOT?",
       "0;parabolic;23;3;1e+06;0", false},
      {":SOUR:MTON:STAT ON;:MTON:STAT?;:MTON OFF;:MTON?;:AM?", "1;;1;0", false},
      {":MTON:PHAS rand;:MTON:PHAS?", "random", true},
      {":MTON:PHAS sine;:SYST:ERR?", "-2,Invalid parameter;Expected multi-tone phase", false},
      {":MTON:PHAS:SEED -5;:MTON:PHAS:SEED?", "-5", true},  // taken as given
      {":MTON:FSP 100 kHz;:MTON:NTON 4001;:MTON:NTON?", "400", true},
      {":MTON:FSP 30 MHz;:MTON:FSP?", "100000", true},  // 2e7, then 4e7 / 400
      {":MTON:NTON 0;:MTON:NTON?", "1", true},
      {":MTON:FSP 0.0001;:MTON:FSP?;:MTON:NTON 5000;:MTON:NTON?", "0.001;;4001", true},
      {":MTON:NTON 3;:MTON:FSP 30 MHz;:MTON:FSP?", "13333333.333333334", true},
      {":MTON:FNOT 50 MHz;:MTON:FNOT?;:MTON:FNOT -1;:MTON:FNOT?", "4e+07;;0", true},
      {":SOURCE:MTONE:FNOTCH 2.5 MHz;:SOUR:MTON:FNOT?", "2500000", true},
      {":MTON:NTON;:MTON:NTON?", "3", false},  // no parameter: nothing changes
  });
  EXPECT_TRUE(seedEnabled());
  view->findChild<MyComboBox*>()->setCurrentIndex(0);  // the user's pick goes the same way
  EXPECT_FALSE(seedEnabled());

  // The defaults follow the spacing in force: 3 tones unless 3 x spacing passes 4e7.
  client.command(":MTON:NTON 1;:MTON:FSP 15 MHz");
  central.presetButtonPressed();
  EXPECT_EQ(client.query(":MTON:PHAS?;:MTON:PHAS:SEED?;:MTON:NTON?;:MTON:FSP?;:MTON:FNOT?"),
            "parabolic;23;2;1e+06;0");
}

// The comb plays at its rate with the level raised by its mean power, so that the mean power
// of the output is the panel's level; a long build is bracketed by the progress dialog.
TEST_F(MultitoneUnitTest, GeneratorRetunesToTheCombAndCorrectsTheLevel) {
  std::vector<QString> progress;
  QObject receiver;
  // Queued to this thread, as they are to the dialog's slots.
  QObject::connect(&central, &CentralWidget::showProgressDialogSignal, &receiver,
                   [&] { progress.push_back("show"); });
  QObject::connect(&central, &CentralWidget::setProgressPercentSignal, &receiver,
                   [&](int p) { progress.push_back(QString::number(p)); });
  QObject::connect(&central, &CentralWidget::hideProgressDialogSignal, &receiver,
                   [&] { progress.push_back("hide"); });
  connectAndEnable();
  const double correction = buildMultitone(view->settings()).levelOffsetDb;
  EXPECT_LT(correction, -1.0);
  EXPECT_DOUBLE_EQ(levelOfComb(":MTON ON", 4e6), -20.0 - correction);
  EXPECT_TRUE(progress.empty()) << "3 tones show no progress";

  // 400 tones at 1e5 Hz play at 4.99e7/s; a build that a second restart abandons brackets only
  // "show" and "hide", the build that plays brackets every step.
  central.setLevel(-35);
  restart(":MTON:FSP 100 kHz", 4e5);
  const double level = levelOfComb(":MTON:NTON 400", 4.99e7);
  EXPECT_DOUBLE_EQ(level, -35.0 - buildMultitone(view->settings()).levelOffsetDb);
  std::vector<QString> expected = {"show"};
  for (int p = 0; p < 100; p += 5) expected.push_back(QString::number(p));
  expected.push_back("hide");
  const auto lastBracket = [&] {
    auto show = std::find(progress.rbegin(), progress.rend(), QString("show"));
    return show == progress.rend() ? std::vector<QString>()
                                   : std::vector<QString>(show.base() - 1, progress.end());
  };
  EXPECT_TRUE(waitUntil([&] { return lastBracket() == expected; }));
  auto* dialog = central.findChild<QProgressDialog*>();
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->labelText(), "Building Waveform");
  EXPECT_FALSE(dialog->isVisible());
}

// A preset is taken as it stands: no clamp and no product rule, absent keys keep the controls;
// values beyond the slots' limits play as they are, and values that make no comb play nothing,
// without bringing the program down.
TEST_F(MultitoneUnitTest, PresetsAreTakenAsTheyStand) {
  client.command(
      ":MTON:PHAS rand;:MTON:PHAS:SEED 99;:MTON:NTON 7;:MTON:FSP 250 kHz;"
      ":MTON:FNOT 300 kHz");
  const QString stored = "Fspacing=250000|NotchWidth=300000|Ntones=7|Phase=1|RandomPhaseSeed=99";
  EXPECT_EQ(savedGroup("Mtone"), stored);
  central.presetButtonPressed();
  central.loadPreset(dir.filePath("saved.ini"));
  EXPECT_EQ(savedGroup("Mtone", "again.ini"), stored);

  // 4001 tones at 1e5 Hz: the product rule would allow 400; the rate asked for is 5e8.
  connectDevice();
  log.mark();
  loadText(
      "Mode=4\nOutputState=true\nModulationState=true\n"
      "[Mtone]\nNtones=4001\nFspacing=1e5\nPhase=7\n");
  EXPECT_EQ(savedGroup("Mtone"),
            "Fspacing=100000|NotchWidth=300000|Ntones=4001|Phase=1|"
            "RandomPhaseSeed=99");
  EXPECT_FALSE(seedEnabled()) << "the seed follows the value loaded, not the selection";
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  EXPECT_EQ(log.calls("krtSetSampleRate").back()["args"]["sampleRate"].get<double>(), 5e8);

  for (const char* keys : {"Ntones=0\nFspacing=1e6", "Ntones=-4",
                           "Ntones=4\nFspacing=-1e6",  // the rate search would never end
                           "Ntones=3\nFspacing=abc", "Ntones=200000000\nFspacing=1"}) {
    SCOPED_TRACE(keys);
    central.stopStreaming();
    log.mark();
    loadText(QByteArray("Mode=4\nOutputState=true\nModulationState=true\n[Mtone]\n") + keys);
    // The new thread's generator returns at once; the dispatch's abort ends the thread.
    ASSERT_TRUE(waitUntil([&] { return !log.calls("krtAbort").empty(); }));
    EXPECT_TRUE(log.calls("krtSubmitIQ").empty());
    EXPECT_TRUE(log.calls("krtSetSampleRate").empty());
  }
}

}  // namespace

// SPDX-License-Identifier: MIT
// The multitone unit in the panel: form, defaults, remote rows 80 to 91 through a real TCP
// client, the generator's retune, level correction and progress on the simulated device, and
// the "Mtone" preset group taken as it stands.
#include "core/central_widget.h"
#include "core/panel_fixture.h"
#include "core/scpi_client.h"
#include "modes/multitone/mode_view_multitone.h"
#include "modes/multitone/multitone_builder.h"
#include "modes/my_stacked_widget.h"
#include "shell/error_queue.h"
#include "support/form_rows.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_list_widget.h"

#include <QCheckBox>
#include <QProgressDialog>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

class MultitoneUnitTest : public PanelFixture {
protected:
  void SetUp() override {
    PanelFixture::SetUp();
    view = central.findChild<ModeViewMultitone*>();
    ASSERT_NE(view, nullptr);
  }
  bool seedEnabled() const { return view->findChildren<IntLineEdit*>().at(0)->isEnabled(); }
  void playMultitone() {
    connectDevice();
    central.setRFEnabled(true);
    central.setModEnabled(true);
    view->enabledCheck()->click();
    ASSERT_EQ(central.currentMode(), 4);
  }
  // Waits for a retune to `rate` followed by a chunk of 1/60 s; returns the level of that
  // retune (NaN if none came).
  double waitForComb(double rate) {
    double level = std::nan("");
    const bool seen = waitUntil([&] {
      bool tuned = false;
      for (auto& e : log.events()) {
        const std::string fn = e.value("fn", "");
        if (fn == "krtSetSampleRate") tuned = e["args"]["sampleRate"].get<double>() == rate;
        if (tuned && fn == "krtSetLevel")
          level = e["args"]["level"].is_number() ? e["args"]["level"].get<double>() : HUGE_VAL;
        if (tuned && fn == "krtSubmitIQ" && e["args"]["count"].get<int>() == int(rate / 60))
          return true;
      }
      return false;
    });
    return seen ? level : std::nan("");
  }

  ModeViewMultitone* view = nullptr;
};

TEST_F(MultitoneUnitTest, FormListRowAndDefaults) {
  EXPECT_EQ(formRows(*view),
            QStringList({"Enabled=QCheckBox", "Tone Phase=MyComboBox", "Seed=IntLineEdit",
                         "Tone Count=IntLineEdit", "Freq Spacing=FrequencyEdit",
                         "Notch Width=FrequencyEdit", "Fixed=0", "Random=1", "Parabolic=2"}));
  EXPECT_EQ(central.findChild<MyListWidget*>()->findModeRow(4)->text(), "Multitone");
  EXPECT_EQ(central.findChild<MyStackedWidget*>()->findMode(4), view);

  // The defaults follow the spacing in force: 3 tones unless 3 x spacing passes 4e7.
  for (const auto& [spacing, count] : {std::pair{1000.0, 3}, {1.5e7, 2}}) {
    view->setToneCount(1);
    view->setFreqSpacing(spacing);
    view->setNotchWidth(1e6);
    view->setPhase(MultiTonePhaseRandom);
    view->setDefaults();
    EXPECT_EQ(view->toneCount(), count);
    EXPECT_EQ(view->freqSpacing(), 1e6);
    EXPECT_EQ(view->notchWidth(), 0.0);
    EXPECT_EQ(view->phase(), MultiTonePhaseParabolic);
    EXPECT_EQ(view->phaseSeed(), 23);
    EXPECT_FALSE(seedEnabled());
  }
  // Only the random law uses the seed; the user's pick goes the same way.
  view->setPhase(MultiTonePhaseRandom);
  EXPECT_TRUE(seedEnabled());
  view->findChild<MyComboBox*>()->setCurrentIndex(0);
  EXPECT_FALSE(seedEnabled());
  EXPECT_EQ(view->settings().phase, MultiTonePhaseFixed);
}

TEST_F(MultitoneUnitTest, RemoteRowsEightyToNinetyOne) {
  ScpiClient client(central.scpiServerPort());
  ASSERT_TRUE(client.connected);
  struct Row {
    QString command;  // empty: only the queries
    std::vector<std::pair<QString, QString>> queries;
    QString logged;  // the one error entry the command leaves, empty: none
  };
  // Each setting clamps and keeps tone count x spacing within 4e7 Hz against the other.
  const std::vector<Row> rows = {
      {"", {{":MTON?", "0"}, {":SOUR:MTON:STAT?", "0"}, {":MTON:PHAS?", "parabolic"}}, ""},
      {":MTON ON", {{":MTON?", "1"}, {":AM?", "0"}}, ""},
      {":MTON OFF", {{":MTON?", "1"}}, ""},  // OFF never does anything
      {":MTON:PHAS rand", {{":MTON:PHAS?", "random"}}, ""},
      {":MTON:PHAS FIX", {{":MTON:PHAS?", "fixed"}}, ""},
      {":MTON:PHAS sine",
       {{":MTON:PHAS?", "fixed"}},
       "-2,Invalid parameter;Expected multi-tone phase"},
      {":MTON:PHAS:SEED -5", {{":MTON:PHAS:SEED?", "-5"}}, ""},  // taken as given
      {":MTON:FSP 100 kHz", {{":MTON:FSP?", "100000"}}, ""},
      {":MTON:NTON 4001", {{":MTON:NTON?", "400"}}, ""},     // 4e7 / 1e5
      {":MTON:FSP 30 MHz", {{":MTON:FSP?", "100000"}}, ""},  // 2e7, then 4e7 / 400
      {":MTON:NTON 0", {{":MTON:NTON?", "1"}}, ""},
      {":MTON:FSP 0.0001", {{":MTON:FSP?", "0.001"}}, ""},
      {":MTON:NTON 5000", {{":MTON:NTON?", "4001"}}, ""},
      {":MTON:NTON 3", {{":MTON:NTON?", "3"}}, ""},
      {":MTON:FSP 30 MHz", {{":MTON:FSP?", "13333333.333333334"}}, ""},
      {":MTON:FNOT 50 MHz", {{":MTON:FNOT?", "4e+07"}}, ""},
      {":MTON:FNOT -1", {{":MTON:FNOT?", "0"}}, ""},
      {":SOURCE:MTONE:FNOTCH 2.5 MHz", {{":SOUR:MTON:FNOT?", "2500000"}}, ""},
      {":MTON:NTON", {{":MTON:NTON?", "3"}}, ""},  // no parameter: nothing changes
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.command.toStdString());
    if (!row.command.isEmpty()) client.command(row.command);
    for (const auto& [query, reply] : row.queries) EXPECT_EQ(client.query(query), reply) << query;
    EXPECT_EQ(errorLogCount(), row.logged.isEmpty() ? 0 : 1);
    if (!row.logged.isEmpty()) EXPECT_EQ(client.query(":SYST:ERR?"), row.logged);
  }
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

  playMultitone();
  const double level = waitForComb(4e6);
  const double correction = buildMultitone(view->settings()).levelOffsetDb;
  EXPECT_LT(correction, -1.0);
  EXPECT_DOUBLE_EQ(level, -20.0 - correction);
  EXPECT_TRUE(progress.empty()) << "3 tones show no progress";

  // Each change waits for its output: a thread that starts late reads the controls as the
  // next change has left them, and would build (and abandon) that comb once more.
  log.mark();
  central.setLevel(-35);
  view->setFreqSpacing(1e5);
  ASSERT_TRUE(std::isfinite(waitForComb(4e5)));
  log.mark();
  view->setToneCount(400);
  const double levelOf400 = waitForComb(4.99e7);
  EXPECT_DOUBLE_EQ(levelOf400, -35.0 - buildMultitone(view->settings()).levelOffsetDb);
  // A build that a second restart abandons brackets nothing but "show" and "hide"; the build
  // that plays brackets every step.
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
  connectDevice();
  QTemporaryDir dir;
  view->setPhase(MultiTonePhaseRandom);
  view->setPhaseSeed(99);
  view->setToneCount(7);
  view->setFreqSpacing(2.5e5);
  view->setNotchWidth(3e5);
  central.savePreset(dir.filePath("all.ini"));
  view->setDefaults();
  central.loadPreset(dir.filePath("all.ini"));
  EXPECT_EQ(view->phase(), MultiTonePhaseRandom);
  EXPECT_EQ(view->phaseSeed(), 99);
  EXPECT_EQ(view->toneCount(), 7);
  EXPECT_EQ(view->freqSpacing(), 2.5e5);
  EXPECT_EQ(view->notchWidth(), 3e5);

  auto writePreset = [&](const std::vector<std::pair<QString, QVariant>>& mtone) {
    const QString path = dir.filePath("preset.ini");
    QFile::remove(path);
    QSettings s(path, QSettings::IniFormat);
    s.setValue("Mode", 4);
    s.setValue("OutputState", true);
    s.setValue("ModulationState", true);
    for (const auto& [key, value] : mtone) s.setValue("Mtone/" + key, value);
    return path;
  };

  // 4001 tones at 1e5 Hz: the product rule would allow 400; the rate asked for is 5e8.
  log.mark();
  central.loadPreset(writePreset({{"Ntones", 4001}, {"Fspacing", 1e5}, {"Phase", 7}}));
  EXPECT_EQ(view->toneCount(), 4001);
  EXPECT_EQ(view->freqSpacing(), 1e5);
  EXPECT_EQ(view->notchWidth(), 3e5);
  EXPECT_EQ(view->phase(), MultiTonePhaseRandom) << "no item holds 7: the selection stays";
  EXPECT_FALSE(seedEnabled()) << "the seed follows the value loaded, not the selection";
  EXPECT_EQ(central.currentMode(), 4);
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  EXPECT_EQ(log.calls("krtSetSampleRate").back()["args"]["sampleRate"].get<double>(), 5e8);

  const std::vector<std::vector<std::pair<QString, QVariant>>> nothingToPlay = {
      {{"Ntones", 0}, {"Fspacing", 1e6}, {"Phase", 0}},
      {{"Ntones", -4}},
      {{"Ntones", 4}, {"Fspacing", -1e6}},  // a spacing below zero would never end the rate search
      {{"Ntones", 3}, {"Fspacing", "abc"}},
      {{"Ntones", 200000000}, {"Fspacing", 1.0}},
  };
  for (const auto& keys : nothingToPlay) {
    SCOPED_TRACE(keys[0].second.toInt());
    const QString path = writePreset(keys);
    central.stopStreaming();
    log.mark();
    central.loadPreset(path);
    // The new thread's generator returns at once; the dispatch's abort ends the thread.
    ASSERT_TRUE(waitUntil([&] { return !log.calls("krtAbort").empty(); }));
    EXPECT_TRUE(log.calls("krtSubmitIQ").empty());
    EXPECT_TRUE(log.calls("krtSetSampleRate").empty());
  }
}

}  // namespace

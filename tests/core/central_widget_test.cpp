// SPDX-License-Identifier: MIT
// The front panel: clamps, the restart path, mode selection and the factory preset.
#include "core/central_widget.h"

#include "core/device.h"
#include "core/impairment_widget.h"
#include "panel_fixture.h"
#include "scpi_client.h"
#include "modes/mode_widget.h"
#include "shell/error_queue.h"
#include "support/events_log.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_list_widget.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QStringList>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace {

// A view with no controls of its own and no generator behind its index.
class PlainView : public ModeWidget {
public:
  PlainView(const QString& name, int index) : ModeWidget(name, index) {}
  void setDefaults() override { ++defaults; }
  void saveSettings(QSettings*) override {}
  void loadSettings(QSettings*) override {}
  int defaults = 0;
};

// Signals of the streaming thread, recorded on the test's thread and queued, as the window
// receives them: a QSignalSpy would append on the emitting thread while the test reads it.
struct StreamSignals {
  explicit StreamSignals(CentralWidget& central) {
    QObject::connect(
        &central, &CentralWidget::updateStatusBarModeSignal, &receiver,
        [this](const QString& text) { modeTexts.append(text); }, Qt::QueuedConnection);
    QObject::connect(
        &central, &CentralWidget::deviceConnectionLost, &receiver, [this] { ++lost; },
        Qt::QueuedConnection);
  }
  QObject receiver;
  QStringList modeTexts;
  int lost = 0;
};

class CentralWidgetTest : public PanelFixture {
protected:
  QPushButton* button(const QString& text) {
    for (QPushButton* b : central.findChildren<QPushButton*>())
      if (b->text() == text) return b;
    return nullptr;
  }

  // Waits until the running thread has told the status bar what it plays.
  bool waitForMode(StreamSignals& recorded, const QString& text) {
    return waitUntil([&] { return recorded.modeTexts.contains(text); });
  }
};

TEST_F(CentralWidgetTest, FrontPanelClampsAndLogsAsDocumented) {
  struct Case {
    const char* what;
    std::function<void(CentralWidget&)> act;
    std::function<double(CentralWidget&)> read;
    double expected;
    const char* logged;  // null: silent
  };
  auto freq = [](CentralWidget& c) { return c.frequency(); };
  auto fstep = [](CentralWidget& c) { return c.frequencyStep(); };
  auto level = [](CentralWidget& c) { return c.level(); };
  auto lstep = [](CentralWidget& c) { return c.levelStep(); };
  const std::vector<Case> cases = {
      {"29 MHz", [](CentralWidget& c) { c.setCenterFrequency(29e6); }, freq, 30e6,
       "Center frequency clamped"},
      {"6.5 GHz", [](CentralWidget& c) { c.setCenterFrequency(6.5e9); }, freq, 6e9,
       "Center frequency clamped"},
      {"in range", [](CentralWidget& c) { c.setCenterFrequency(2.45e9); }, freq, 2.45e9, nullptr},
      {"step -1", [](CentralWidget& c) { c.setStepFrequency(-1); }, fstep, 0,
       "Step frequency clamped"},
      {"step 7 GHz", [](CentralWidget& c) { c.setStepFrequency(7e9); }, fstep, 6e9,
       "Step frequency clamped"},
      {"arrow past top",
       [](CentralWidget& c) {
         c.setCenterFrequency(5.9e9);
         c.setStepFrequency(1e9);
         c.increaseCenterFrequency();
       },
       freq, 6e9, "Center frequency clamped"},
      {"level 20", [](CentralWidget& c) { c.setLevel(20); }, level, 10, nullptr},
      {"level -130", [](CentralWidget& c) { c.setLevel(-130); }, level, -120, nullptr},
      {"level step 150", [](CentralWidget& c) { c.setLevelStep(150); }, lstep, 100, nullptr},
      {"level step -5", [](CentralWidget& c) { c.setLevelStep(-5); }, lstep, 0, nullptr},
      {"down at -120",
       [](CentralWidget& c) {
         c.setLevel(-120);
         c.setLevelStep(10);
         c.decreaseLevel();
       },
       level, -120, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    errorLogClear();
    c.act(central);
    EXPECT_DOUBLE_EQ(c.read(central), c.expected);
    if (c.logged) {
      ASSERT_EQ(errorLogCount(), 1);
      EXPECT_EQ(errorLogNext(), QString("-1,Setting clamped;") + c.logged);
    } else {
      EXPECT_EQ(errorLogCount(), 0);
    }
  }
}

// Typed entries, ended by Return or Tab, as a user makes them: each field then shows what a
// remote query reads back, and the level what the device plays.
TEST_F(CentralWidgetTest, TypedEntriesShowTheValueInForce) {
  connectDevice();
  central.setRFEnabled(true);
  central.show();
  ScpiClient client(central.scpiServerPort());
  auto* stack = central.findChild<QStackedWidget*>();

  const QList<DoubleEdit*> panelEdits =
      central.findChildren<DoubleEdit*>(QString(), Qt::FindDirectChildrenOnly);
  ASSERT_EQ(panelEdits.size(), 2);
  auto field = [&](const char* label) -> QLineEdit* {
    for (QLabel* l : central.findChildren<QLabel*>())
      if (l->text() == label) return qobject_cast<QLineEdit*>(l->buddy());
    return nullptr;
  };
  const struct {
    QLineEdit* edit;
    const char* typed;
    Qt::Key end;
    const char* shown;
    const char* query;
    const char* reply;
  } cases[] = {
      {panelEdits[0], "-130", Qt::Key_Return, "-120", ":POW?", "-120"},
      {panelEdits[0], "15", Qt::Key_Tab, "10", ":POW?", "10"},
      {panelEdits[0], "-", Qt::Key_Return, "10", ":POW?", "10"},
      {panelEdits[1], "150", Qt::Key_Tab, "100", ":POW:STEP?", "100"},
      {field("Depth(%)"), "150", Qt::Key_Return, "100", ":AM:DEPT?", "100"},
      {field("Tone Count"), "0", Qt::Key_Tab, "1", ":MTON:NTON?", "1"},
      {field("Tone Count"), "5000", Qt::Key_Return, "40", ":MTON:NTON?", "40"},
      {field("Points"), "1", Qt::Key_Tab, "2", ":STEP:POIN?", "2"},
      {field("Points"), "", Qt::Key_Return, "2", ":STEP:POIN?", "2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.query) + " typed " + c.typed);
    ASSERT_NE(c.edit, nullptr);
    // The remote notice pops up with each command; the panel takes the keys back.
    QApplication::setActiveWindow(&central);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&central));
    // A field of a mode view takes focus only on the page on show.
    for (QWidget* w = c.edit; w; w = w->parentWidget())
      if (auto* view = qobject_cast<ModeWidget*>(w)) stack->setCurrentWidget(view);
    c.edit->setFocus();
    c.edit->selectAll();
    c.edit->del();
    QTest::keyClicks(c.edit, c.typed);
    QTest::keyClick(c.edit, c.end);
    EXPECT_EQ(c.edit->text(), c.shown);
    EXPECT_EQ(client.query(c.query), c.reply);
  }
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSetLevel").empty(); }));
  EXPECT_DOUBLE_EQ(log.calls("krtSetLevel").back()["args"]["level"].get<double>(), 10.0);
}

TEST_F(CentralWidgetTest, RestartWithoutDeviceDoesNothing) {
  central.settingsChanged();
  EXPECT_FALSE(central.gate().isSettingsPending());
  EXPECT_TRUE(log.events().empty());
}

TEST_F(CentralWidgetTest, RestartWhileStoppedLeavesSettingsPending) {
  ASSERT_TRUE(device.open(21000001));
  central.settingsChanged();
  EXPECT_TRUE(central.gate().isSettingsPending());
  EXPECT_FALSE(central.isStreaming());
  central.gate().armOpc();
  EXPECT_FALSE(central.gate().opcComplete());
}

TEST_F(CentralWidgetTest, TheThreadPlaysWhatRfAndModulationAsk) {
  StreamSignals modeText(central);
  connectDevice();
  ASSERT_TRUE(waitForMode(modeText, "Off"));
  EXPECT_TRUE(log.calls("krtSubmitIQ").empty()) << "RF off submits nothing";

  central.setCenterFrequency(29e6);
  central.setRFEnabled(true);
  ASSERT_TRUE(waitForMode(modeText, "CW"));
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  EXPECT_EQ(log.calls("krtSubmitIQ")[0]["args"]["count"], 833333);
  EXPECT_DOUBLE_EQ(log.calls("krtSetFrequency").back()["args"]["frequency"].get<double>(), 30e6);

  // "Mod On" before any mode is enabled still plays the carrier, with no mode text. The texts
  // of the threads before it are taken off the queue first.
  QCoreApplication::processEvents();
  modeText.modeTexts.clear();
  log.mark();
  central.setModEnabled(true);
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  QCoreApplication::processEvents();  // what the thread emitted before it submitted
  for (const QString& text : modeText.modeTexts) EXPECT_EQ(text, "");
}

TEST_F(CentralWidgetTest, OpcCompletesAfterATenthOfASecondOfOutput) {
  connectDevice();
  central.setRFEnabled(true);
  central.gate().armOpc();
  EXPECT_FALSE(central.gate().opcComplete());
  EXPECT_TRUE(waitUntil([&] { return central.gate().opcComplete(); }));
}

TEST_F(CentralWidgetTest, ExtRefClickRestartsTwice) {
  connectDevice();
  log.mark();
  button("Ext Ref")->click();
  auto timebase = log.calls("krtSetTimebase");
  ASSERT_EQ(timebase.size(), 2u);
  for (auto& call : timebase) EXPECT_EQ(call["args"]["state"], 1);
  EXPECT_EQ(log.calls("krtSetIQOffset").size(), 2u);
  EXPECT_EQ(log.calls("krtSetTimebaseOffset").size(), 2u);
}

TEST_F(CentralWidgetTest, ModeListBrowsesAndEnabledBoxActivates) {
  auto* first = new PlainView("First", 9);
  auto* second = new PlainView("Second", 10);
  central.addMode(first);
  central.addMode(second);
  connectDevice();
  central.setRFEnabled(true);
  central.setModEnabled(true);

  auto* list = central.findChild<MyListWidget*>();
  // The header, the instrument's own modes, then the two added here, in order.
  const int rows = list->count();
  ASSERT_GE(rows, 3);
  EXPECT_EQ(list->item(0)->flags(), Qt::NoItemFlags) << "the header row can't be selected";
  QListWidgetItem* secondRow = list->item(rows - 1);
  EXPECT_EQ(secondRow->text(), "Second");
  EXPECT_EQ(secondRow->data(256).toInt(), 10);
  EXPECT_EQ(list->item(rows - 2)->text(), "First");

  // Pressing a row only browses: the page changes, the output and the colours don't.
  log.mark();
  central.modeSelectChanged(secondRow);
  EXPECT_EQ(central.findChild<QStackedWidget*>()->currentWidget(), second);
  EXPECT_TRUE(log.calls("krtSetTimebase").empty());
  EXPECT_EQ(list->activeRowMode(), -1);

  // Checking a view's box makes it active: restart, coloured row, its name on the status bar.
  StreamSignals modeText(central);
  second->enabledCheck()->click();
  EXPECT_EQ(central.currentMode(), 10);
  EXPECT_EQ(list->activeRowMode(), 10);
  EXPECT_EQ(log.calls("krtSetTimebase").size(), 1u);
  // The carrier's thread has been joined by now. Index 10 has no generator: the new thread
  // returns at once and plays nothing.
  log.mark();
  ASSERT_TRUE(waitForMode(modeText, "Second"));
  waitUntil([] { return false; }, 100);
  EXPECT_TRUE(log.calls("krtSubmitIQ").empty());

  // Only the active view's changes restart the output.
  log.mark();
  emit first->updated();
  EXPECT_TRUE(log.calls("krtSetTimebase").empty());
  emit second->updated();
  EXPECT_EQ(log.calls("krtSetTimebase").size(), 1u);
}

TEST_F(CentralWidgetTest, PresetRestoresTheFactoryStateButKeepsTheMode) {
  auto* view = new PlainView("Only", 9);
  central.addMode(view);
  connectDevice();
  view->enabledCheck()->click();
  central.setRFEnabled(true);
  central.setModEnabled(true);
  button("Ext Ref")->click();
  central.setCenterFrequency(3e9);
  central.setStepFrequency(5e3);
  central.setLevel(-55);
  central.setLevelStep(3);
  const int defaultsBefore = view->defaults;

  central.presetButtonPressed();
  EXPECT_FALSE(central.rfEnabled());
  EXPECT_FALSE(central.modEnabled());
  EXPECT_FALSE(central.referenceEnabled());
  EXPECT_DOUBLE_EQ(central.frequency(), 1e9);
  EXPECT_DOUBLE_EQ(central.frequencyStep(), 1e6);
  EXPECT_DOUBLE_EQ(central.level(), -20);
  EXPECT_DOUBLE_EQ(central.levelStep(), 10);
  EXPECT_EQ(view->defaults, defaultsBefore + 1);
  EXPECT_EQ(central.currentMode(), 9);
  EXPECT_EQ(errorLogCount(), 0);
}

TEST_F(CentralWidgetTest, LostDeviceIsReportedFromTheStream) {
  StreamSignals streamSignals(central);
  connectDevice();
  central.setRFEnabled(true);
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  std::ofstream(unplugPath()) << "unplugged";
  EXPECT_TRUE(waitUntil([&] { return streamSignals.lost == 1; }));
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtAbort").empty(); }));
}

}  // namespace

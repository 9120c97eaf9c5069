// SPDX-License-Identifier: MIT
// The front panel: clamps, the restart path, mode selection and the factory preset.
#include "core/central_widget.h"

#include "panel_fixture.h"
#include "scpi_client.h"
#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "modes/mode_widget.h"
#include "shell/error_queue.h"
#include "widgets/double_edit.h"
#include "widgets/my_list_widget.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QStringList>
#include <QStackedWidget>

#include <gtest/gtest.h>

namespace {

// A view with no controls of its own and no generator behind its index.
class PlainView : public ModeWidget {
public:
  PlainView(const QString& name, int index) : ModeWidget(name, index) {}
  void setDefaults() override {}
  void saveSettings(QSettings*) override {}
  void loadSettings(QSettings*) override {}
};

// A unit added the way every mode is added: its own view, generator and rows, one
// registration line; index 15 and rows 128 and 129 belong to no instrument mode.
void registerWithThrowawayUnit(ModeRegistry& registry) {
  registerModeUnits(registry);
  auto* view = new PlainView("Throwaway", 15);
  registry.addView(view);
  registry.setGenerator(15, [](ModeHost& host) {
    static const std::vector<Sample> samples(1000, Sample(0.5f, -0.5f));
    host.retune(1e6);
    host.submitWaveform(samples.data(), static_cast<int64_t>(samples.size()), false);
  });
  registry.addRows(128, 129, [](ModeHost& host, Scpi& command, int row) {
    handleModeStateRow(host, command, 15, row == 129);
  });
}

class ThrowawayUnitTest : public PanelFixtureOf<registerWithThrowawayUnit> {};

TEST_F(ThrowawayUnitTest, JoinsTheListTheDispatchAndTheRemoteRows) {
  auto* list = central.findChild<MyListWidget*>();
  ASSERT_NE(list->findModeRow(15), nullptr);
  EXPECT_EQ(list->findModeRow(15)->text(), "Throwaway");
  EXPECT_EQ(list->item(list->count() - 1), list->findModeRow(15)) << "after the instrument's";

  connectDevice();
  central.setRFEnabled(true);
  central.setModEnabled(true);
  ScpiClient client(central.scpiServerPort());
  EXPECT_EQ(client.query(":RAD:CUST?"), "0");
  log.mark();
  client.command(":RAD:CUST ON");
  EXPECT_EQ(central.currentMode(), 15);
  EXPECT_EQ(client.query(":RAD:CUST?"), "1");
  ASSERT_TRUE(waitUntil([&] {
    for (auto& call : log.calls("krtSetSampleRate"))
      if (call["args"]["sampleRate"].get<double>() == 1e6) return !log.calls("krtSubmitIQ").empty();
    return false;
  }));
}

// Signals of the streaming thread, recorded on the test's thread and queued, as the window
// receives them: a QSignalSpy would append on the emitting thread while the test reads it.
struct StreamSignals {
  explicit StreamSignals(CentralWidget& central) {
    QObject::connect(
        &central, &CentralWidget::updateStatusBarModeSignal, &receiver,
        [this](const QString& text) { modeTexts.append(text); }, Qt::QueuedConnection);
  }
  QObject receiver;
  QStringList modeTexts;
};

class CentralWidgetTest : public PanelFixture {
protected:
  // Waits until the running thread has told the status bar what it plays.
  bool waitForMode(StreamSignals& recorded, const QString& text) {
    return waitUntil([&] { return recorded.modeTexts.contains(text); });
  }
};

// Typed entries, ended by Return or Tab, as a user makes them: each field then shows what a
// remote query reads back, and the level what the device plays.
TEST_F(CentralWidgetTest, TypedEntriesShowTheValueInForce) {
  connectDevice();
  central.setRFEnabled(true);
  central.show();
  ScpiClient client(central.scpiServerPort());
  auto* stack = central.findChild<QStackedWidget*>();

  // The panel's two direct number fields are the level and its step.
  QLineEdit* level =
      central.findChildren<DoubleEdit*>(QString(), Qt::FindDirectChildrenOnly).value(0);
  auto field = [&](const char* label) -> QLineEdit* {
    for (QLabel* l : central.findChildren<QLabel*>())
      if (l->text() == label) return qobject_cast<QLineEdit*>(l->buddy());
    return nullptr;
  };
  // The field shows what the remote query reads.
  const struct {
    QLineEdit* edit;
    const char* typed;
    Qt::Key end;
    const char* query;
    const char* shown;
  } cases[] = {
      {level, "-130", Qt::Key_Return, ":POW?", "-120"},
      {level, "15", Qt::Key_Tab, ":POW?", "10"},
      {field("Depth(%)"), "150", Qt::Key_Return, ":AM:DEPT?", "100"},
      {field("Points"), "1", Qt::Key_Tab, ":STEP:POIN?", "2"},
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
    EXPECT_EQ(client.query(c.query), c.shown);
  }
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSetLevel").empty(); }));
  EXPECT_DOUBLE_EQ(log.calls("krtSetLevel").back()["args"]["level"].get<double>(), 10.0);
}

// Each restart runs what RF and modulation ask for. Without a device a restart does nothing,
// and leaves no settings pending for "*OPC" (the preset tests load with the device open and
// the stream stopped).
TEST_F(CentralWidgetTest, RestartsPlayWhatRfAndModulationAsk) {
  central.settingsChanged();
  EXPECT_FALSE(central.gate().isSettingsPending());
  EXPECT_TRUE(log.events().empty());

  StreamSignals modeText(central);
  connectDevice();
  ASSERT_TRUE(waitForMode(modeText, "Off"));
  central.setCenterFrequency(29e6);
  central.setRFEnabled(true);
  ASSERT_TRUE(waitForMode(modeText, "CW"));
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  EXPECT_DOUBLE_EQ(log.calls("krtSetFrequency").back()["args"]["frequency"].get<double>(), 30e6);

  // "Mod On" before any mode is enabled still plays the carrier, with no mode text. The texts
  // of the threads before it are taken off the queue first.
  QCoreApplication::processEvents();
  modeText.modeTexts.clear();
  log.mark();
  central.setModEnabled(true);
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  QCoreApplication::processEvents();
  for (const QString& text : modeText.modeTexts) EXPECT_EQ(text, "");

  // A click on "Ext Ref" restarts twice, each time with the external reference.
  log.mark();
  for (QPushButton* b : central.findChildren<QPushButton*>())
    if (b->text() == "Ext Ref") b->click();
  auto timebase = log.calls("krtSetTimebase");
  ASSERT_EQ(timebase.size(), 2u);
  for (auto& call : timebase) EXPECT_EQ(call["args"]["state"], 1);
  EXPECT_EQ(log.calls("krtSetIQOffset").size(), 2u);
  EXPECT_EQ(log.calls("krtSetTimebaseOffset").size(), 2u);
}

TEST_F(CentralWidgetTest, ModeListBrowsesAndEnabledBoxActivates) {
  auto* second = new PlainView("Second", 10);
  central.addMode(second);
  connectDevice();
  central.setRFEnabled(true);
  central.setModEnabled(true);
  auto* list = central.findChild<MyListWidget*>();
  QListWidgetItem* secondRow = list->findModeRow(10);

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
}

}  // namespace

// SPDX-License-Identifier: MIT
// Shared fixture of the pulse and sweep units' panel tests: the unit's view in the panel, a
// remote client and its rows, the device calls since a restart, and preset groups as text.
#pragma once

#include "core/panel_fixture.h"
#include "core/scpi_client.h"

#include <QSignalSpy>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// A device call with its argument: sample rate, frequency, level, sample count, or 0.
using Call = std::pair<std::string, double>;
using Calls = std::vector<Call>;

template <class View>
class UnitPanelTest : public PanelFixture {
protected:
  void SetUp() override {
    PanelFixture::SetUp();
    view = central.findChild<View*>();
    ASSERT_NE(view, nullptr);
    ASSERT_TRUE(client.connected);
  }

  // A remote line, its reply, whether the view reported a change, and what `shown` then reads
  // (empty: not looked at).
  struct Row {
    QString line, reply;
    bool updates;
    QString shown = {};
  };

  // Sends the rows in order; none of them leaves an error in the queue.
  void checkRows(const std::vector<Row>& rows, const std::function<QString()>& shown = {}) {
    QSignalSpy updated(view, &ModeWidget::updated);
    for (const Row& row : rows) {
      SCOPED_TRACE(row.line);
      updated.clear();
      EXPECT_EQ(client.query(row.line), row.reply);
      EXPECT_EQ(updated.count() > 0, row.updates);
      if (!row.shown.isEmpty()) {
        EXPECT_EQ(shown(), row.shown);
      }
    }
    EXPECT_EQ(client.query(":SYST:ERR:COUN?"), "0");
  }

  // Opens the device with RF and modulation on, so that the selected mode plays.
  void connectAndEnable() {
    connectDevice();
    central.setRFEnabled(true);
    central.setModEnabled(true);
  }

  // Sends a line that restarts the thread and waits until the new one sets `sampleRate`.
  void restart(const QString& line, double sampleRate) {
    log.mark();
    client.command(line);
    const Calls retune = {{"krtSetSampleRate", sampleRate}};
    ASSERT_TRUE(waitUntil([&] { return played({"krtSetSampleRate"}) == retune; }));
  }

  // The first `limit` calls of `names` with their number argument, in order, since the last
  // mark and after the abort that ended the thread running then.
  Calls played(const std::vector<std::string>& names, size_t limit = SIZE_MAX) const {
    std::vector<std::string> wanted = names;
    wanted.push_back("krtAbort");
    Calls out;
    bool aborted = false;
    log.scan(wanted, [&](const nlohmann::json& e) {
      const std::string fn = e.value("fn", "");
      aborted = aborted || fn == "krtAbort";
      if (!aborted || std::find(names.begin(), names.end(), fn) == names.end()) return true;
      const nlohmann::json args = e.value("args", nlohmann::json::object());
      double value = 0.0;
      for (const auto& arg : args.items())
        if (arg.value().is_number()) value = arg.value().template get<double>();
      out.emplace_back(fn, value);
      return out.size() < limit;
    });
    return out;
  }

  // A waveform unit plays on its own when "Continuous"; after `single` it waits for "*TRG",
  // then plays one pass less its last sample, behind a trigger mark, and flushes.
  void checkContinuousThenSingle(const QString& on, const QString& single, double rate,
                                 double pass) {
    connectAndEnable();
    restart(on, rate);
    EXPECT_TRUE(waitUntil([&] { return !played({"krtSubmitIQ"}).empty(); }));
    EXPECT_TRUE(played({"krtSubmitTrigger"}).empty());
    restart(single, rate);
    QTest::qWait(50);
    EXPECT_TRUE(played({"krtSubmitIQ", "krtSubmitTrigger"}).empty()) << "nothing before *TRG";
    client.command("*TRG");
    ASSERT_TRUE(waitUntil([&] { return !played({"krtFlushAndWait"}).empty(); }));
    EXPECT_EQ(played({"krtSubmitTrigger", "krtSubmitIQ", "krtFlushAndWait"}),
              (Calls{{"krtSubmitTrigger", 0}, {"krtSubmitIQ", pass}, {"krtFlushAndWait", 0}}));
  }

  View* view = nullptr;
  ScpiClient client{central.scpiServerPort()};
};

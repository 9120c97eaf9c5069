// SPDX-License-Identifier: MIT
// Shared fixture of the WLAN units' panel tests: one triggered pass, and a pattern without bits.
#pragma once

#include "modes/mode_types.h"
#include "modes/unit_panel_test.h"
#include "wireless/mode_view_wlan.h"

#include <QCheckBox>

#include <algorithm>
#include <string>
#include <vector>

template <class View>
class WlanUnitPanelTest : public UnitPanelTest<View> {
protected:
  // `set` emits updated() exactly once and leaves `shown` reading `expected`.
  template <class V, class Set, class Shown>
  void checkSet(V& v, const Set& set, Shown shown, const QString& expected) {
    SCOPED_TRACE(expected.toStdString());
    QSignalSpy updated(&v, &ModeWidget::updated);
    set(v);
    EXPECT_EQ(shown(v), expected);
    EXPECT_EQ(updated.count(), 1);
  }

  // With the device open: `v` enabled and single, its controls set by `set`, one "*TRG". The
  // pass is the frame and its idle zeros less the last sample, at what the device was given.
  template <class Set>
  Calls playOnePass(ModeViewWLAN& v, Set set) {
    v.setTriggerMode(TriggerSingle);
    if (!v.enabledCheck()->isChecked()) v.enabledCheck()->click();
    set();
    this->log.mark();
    v.setTriggerMode(TriggerSingle);
    if (!waitUntil([&] { return !this->played({"krtSetSampleRate"}).empty(); })) return {};
    this->client.command("*TRG");
    if (!waitUntil([&] { return !this->played({"krtFlushAndWait"}).empty(); })) return {};
    return this->played({"krtSetSampleRate", "krtSubmitIQ"});
  }

  // With the device open: a custom pattern without a '0' or '1' has nothing to repeat. That
  // thread plays nothing and ends by itself, and the next setting plays again.
  void checkPatternWithoutBitsPlaysNothing(ModeViewWLAN& v) {
    this->log.mark();
    v.enabledCheck()->click();
    ASSERT_TRUE(waitUntil([&] { return !this->played({"krtSubmitIQ"}).empty(); }));
    v.setCustomData("abc 23");
    this->log.mark();
    v.setData(-1);
    const std::vector<std::string> watched = {"krtAbort", "krtSetSampleRate", "krtSubmitIQ"};
    // The end of the running thread, then that of the custom one, which returned by itself.
    const Calls ended = {{"krtAbort", 0}, {"krtAbort", 0}};
    ASSERT_TRUE(waitUntil([&] { return this->played(watched) == ended; }));
    this->log.mark();
    v.setData(7);
    EXPECT_TRUE(waitUntil([&] {
      const std::vector<nlohmann::json> events = this->log.events();  // no abort before this play
      return std::any_of(events.begin(), events.end(), [](const nlohmann::json& e) {
        return e.value("fn", "") == "krtSubmitIQ";
      });
    }));
  }
};

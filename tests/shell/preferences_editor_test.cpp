// SPDX-License-Identifier: MIT
// Preferences dialog: "Accept" stores the controls and tells the library; other exits don't.
#include "shell/preferences_editor.h"

#include "persist/preferences.h"
#include "support/events_log.h"
#include "widgets/int_line_edit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(PreferencesEditor, OnlyAcceptStoresAndSetsTheLibraryModeAndBackend) {
  EventsLog log(std::getenv("KRT40_SIM_EVENTS"));
  const Preferences stored{false, 6000, true, "Simulated", {}};
  enum Exit { Accept, Close, Escape };
  const struct {
    Exit exit;
    Preferences entered;
  } rows[] = {{Accept, {true, 5025, false, "SoapySDR", {}}},
              {Accept, {false, 70000, true, "Simulated", {}}},  // the port has no range check
              {Close, {true, 5025, false, "SoapySDR", {}}},
              {Escape, {true, 5025, false, "SoapySDR", {}}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.exit);
    preferences = stored;
    log.mark();
    PreferencesEditor editor;
    editor.show();
    EXPECT_FALSE(editor.scpiEnabledBox()->isChecked());
    EXPECT_EQ(editor.scpiPortEdit()->value(), 6000);
    EXPECT_TRUE(editor.powerSavingCpuModeBox()->isChecked());
    editor.scpiEnabledBox()->setChecked(row.entered.scpiEnabled);
    editor.scpiPortEdit()->setValue(row.entered.scpiPort);
    editor.powerSavingCpuModeBox()->setChecked(row.entered.powerSavingCpuMode);
    editor.deviceBackendBox()->setCurrentText(row.entered.deviceBackend);
    if (row.exit == Accept)
      QTest::mouseClick(editor.acceptButton(), Qt::LeftButton);
    else if (row.exit == Escape)
      QTest::keyClick(&editor, Qt::Key_Escape);
    else
      editor.close();
    const bool accepted = row.exit == Accept;
    EXPECT_EQ(editor.result(), accepted ? QDialog::Accepted : QDialog::Rejected);
    EXPECT_FALSE(editor.isVisible());
    const Preferences& expected = accepted ? row.entered : stored;
    EXPECT_EQ(preferences.scpiEnabled, expected.scpiEnabled);
    EXPECT_EQ(preferences.scpiPort, expected.scpiPort);
    EXPECT_EQ(preferences.powerSavingCpuMode, expected.powerSavingCpuMode);
    EXPECT_EQ(preferences.deviceBackend, expected.deviceBackend);
    const auto calls = log.calls("krtEnablePowerSavingCpuMode");
    ASSERT_EQ(calls.size(), accepted ? 1u : 0u);
    const auto chosen = log.calls("krtSelectBackend");
    ASSERT_EQ(chosen.size(), accepted ? 1u : 0u);
    if (!accepted) continue;
    EXPECT_EQ(calls[0]["args"]["enabled"], expected.powerSavingCpuMode ? 1 : 0);
    EXPECT_EQ(chosen[0]["args"]["backend"], expected.deviceBackend == "SoapySDR" ? 1 : 0);
  }
}

}  // namespace

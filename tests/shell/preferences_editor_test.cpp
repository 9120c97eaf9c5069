// SPDX-License-Identifier: MIT
// Preferences dialog: "Accept" stores the controls and tells the library; other exits don't.
#include "shell/preferences_editor.h"

#include "persist/preferences.h"
#include "support/events_log.h"
#include "widgets/int_line_edit.h"

#include <QCheckBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

const Preferences kStored{false, 6000, true};

// Opens the dialog on kStored, checks that it shows those values, and enters `entered`.
void openAndEnter(PreferencesEditor& editor, const Preferences& entered) {
  editor.show();
  EXPECT_FALSE(editor.scpiEnabledBox()->isChecked());
  EXPECT_EQ(editor.scpiPortEdit()->value(), 6000);
  EXPECT_TRUE(editor.powerSavingCpuModeBox()->isChecked());
  editor.scpiEnabledBox()->setChecked(entered.scpiEnabled);
  editor.scpiPortEdit()->setValue(entered.scpiPort);
  editor.powerSavingCpuModeBox()->setChecked(entered.powerSavingCpuMode);
}

void expectStored(const Preferences& expected) {
  EXPECT_EQ(preferences.scpiEnabled, expected.scpiEnabled);
  EXPECT_EQ(preferences.scpiPort, expected.scpiPort);
  EXPECT_EQ(preferences.powerSavingCpuMode, expected.powerSavingCpuMode);
}

TEST(PreferencesEditor, AcceptStoresAndSetsTheLibraryMode) {
  EventsLog log(std::getenv("KRT40_SIM_EVENTS"));
  // The port has no range check: 70000 is taken as it stands.
  for (const Preferences& entered :
       {Preferences{true, 5025, false}, Preferences{false, 70000, true}}) {
    preferences = kStored;
    log.mark();
    PreferencesEditor editor;
    openAndEnter(editor, entered);
    QTest::mouseClick(editor.acceptButton(), Qt::LeftButton);
    EXPECT_EQ(editor.result(), QDialog::Accepted);
    expectStored(entered);
    const auto calls = log.calls("krtEnablePowerSavingCpuMode");
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0]["args"]["enabled"], entered.powerSavingCpuMode ? 1 : 0);
  }
}

TEST(PreferencesEditor, OtherExitsChangeNothing) {
  EventsLog log(std::getenv("KRT40_SIM_EVENTS"));
  preferences = kStored;
  for (const bool escape : {false, true}) {
    PreferencesEditor editor;
    openAndEnter(editor, {true, 5025, false});
    if (escape)
      QTest::keyClick(&editor, Qt::Key_Escape);
    else
      editor.close();
    EXPECT_EQ(editor.result(), QDialog::Rejected);
    EXPECT_FALSE(editor.isVisible());
  }
  expectStored(kStored);
  EXPECT_TRUE(log.calls("krtEnablePowerSavingCpuMode").empty());
}

}  // namespace

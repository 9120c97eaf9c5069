// SPDX-License-Identifier: MIT
// Hex entry, the two-button selector and the mode list colouring.
#include "widgets/hex_editor.h"
#include "widgets/hex_validator.h"
#include "widgets/my_button_group.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_list_widget.h"

#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

TEST(HexValidator, Validate) {
  const struct {
    int maxLength;
    const char* input;
    QValidator::State state;
    const char* output;  // checked when acceptable
  } cases[] = {
      {8, "5a3d2f1e", QValidator::Acceptable, "5A3D2F1E"},
      {6, "1a2b3c4d", QValidator::Acceptable, "1A2B3C"},
      {6, "123456zz", QValidator::Acceptable, "123456"},  // cut before checking
      {8, "", QValidator::Acceptable, ""},
      {8, "12g4", QValidator::Invalid, nullptr},
      {8, "12 4", QValidator::Invalid, nullptr},
      {8, "0x12", QValidator::Invalid, nullptr},
  };
  for (const auto& c : cases) {
    HexValidator validator(c.maxLength);
    QString text = c.input;
    int pos = text.length();
    EXPECT_EQ(validator.validate(text, pos), c.state) << c.input;
    if (c.output) {
      EXPECT_EQ(text, c.output) << c.input;
      EXPECT_LE(pos, text.length()) << c.input;
    }
  }
}

TEST(HexEditor, ToIntReadsLastEightDigits) {
  const struct {
    const char* text;
    int maxLength;
    quint32 expected;
  } cases[] = {
      {"5A3D2F1E", 8, 0x5A3D2F1Eu},
      {"8E89BED6", 8, 0x8E89BED6u},
      {"55555555", 6, 0x55555555u},
      {"123456789A", 10, 0x3456789Au},
      {"ff", 8, 0xFFu},
      {"", 8, 0u},
      {"1Z", 8, 0x10u},
  };
  for (const auto& c : cases) {
    HexEditor editor(c.text, c.maxLength);
    EXPECT_EQ(editor.text(), c.text);
    EXPECT_EQ(editor.toInt(), c.expected) << c.text;
  }
}

TEST(HexEditor, TypingIsValidatedButSetTextIsNot) {
  HexEditor editor("", 6);
  editor.insert("1a2b3c4d");  // as a paste: cut to the first six digits
  EXPECT_EQ(editor.text(), "1A2B3C");
  QTest::keyClicks(&editor, "g");
  EXPECT_EQ(editor.text(), "1A2B3C");

  editor.setText("55555555");
  EXPECT_EQ(editor.text(), "55555555");
  EXPECT_EQ(editor.toInt(), 0x55555555u);
}

// A click emits only on a change of state; setState() from code always emits.
TEST(MyButtonGroup, EmitsOnChangeOfStateOrFromCode) {
  MyButtonGroup group("RF On", "RF Off");
  EXPECT_EQ(group.state(), 1);
  EXPECT_TRUE(group.secondButton()->isChecked());
  QSignalSpy spy(&group, &MyButtonGroup::stateChanged);
  const struct {
    int click;
    int state;
    int emits;
  } steps[] = {{1, 1, 0}, {0, 0, 1}, {0, 0, 1}, {1, 1, 2}, {1, 1, 2}};
  for (const auto& step : steps) {
    (step.click == 0 ? group.firstButton() : group.secondButton())->click();
    EXPECT_EQ(group.state(), step.state);
    EXPECT_EQ(spy.count(), step.emits);
  }
  group.setState(0);
  EXPECT_TRUE(group.firstButton()->isChecked());
  EXPECT_FALSE(group.secondButton()->isChecked());
  group.setState(0);
  EXPECT_EQ(spy.count(), 4);
  group.setState(2);  // no such button
  EXPECT_EQ(group.state(), 0);
  EXPECT_EQ(spy.count(), 4);
}

// The value mirror is what generators read on the streaming thread: it must follow every
// change of the selection, and selecting by value reports whether the selection moved.
TEST(MyComboBox, MirrorsTheSelectedValue) {
  MyComboBox box;
  EXPECT_EQ(box.currentValue(), -1);
  box.addItem("Fixed", 0);
  box.addItem("Random", 1);
  box.addItem("Parabolic", 7);
  EXPECT_EQ(box.currentValue(), 0);
  QSignalSpy changed(&box, qOverload<int>(&QComboBox::currentIndexChanged));
  const struct {
    int value;
    bool moved;
    int current;
  } rows[] = {{7, true, 7}, {7, false, 7}, {3, false, 7}, {1, true, 1}};
  for (const auto& row : rows) {
    EXPECT_EQ(box.selectValue(row.value), row.moved) << row.value;
    EXPECT_EQ(box.currentValue(), row.current) << row.value;
  }
  EXPECT_EQ(changed.count(), 2);
  box.setCurrentIndex(0);
  EXPECT_EQ(box.currentValue(), 0);
  box.clear();
  EXPECT_EQ(box.currentValue(), -1);
}

TEST(MyListWidget, ColoursTheActiveRow) {
  MyListWidget list;
  list.addItem("Modulation");  // header without a mode index
  for (int mode : {1, 2, 17}) {
    auto* row = new QListWidgetItem(QString::number(mode), &list);
    row->setData(MyListWidget::ModeIndexRole, mode);
  }
  const QColor active(119, 215, 255);
  const QColor white(Qt::white);
  auto colourOf = [&](int row) { return list.item(row)->background().color(); };

  const struct {
    int index;
    int activeRowMode;
    int colouredRow;  // -1: none
  } steps[] = {
      {2, 2, 2},   {2, 2, 2},    // the same index keeps its colour
      {17, 17, 3}, {9, 17, -1},  // no such row: the old row is cleared, the index stays
      {0, 17, -1},               // the header carries no index
      {1, 1, 1},
  };
  for (const auto& step : steps) {
    list.setActiveModeColored(step.index);
    EXPECT_EQ(list.activeRowMode(), step.activeRowMode) << step.index;
    for (int row = 1; row < list.count(); ++row) {
      if (row == step.colouredRow) {
        EXPECT_EQ(colourOf(row), active) << step.index;
      } else if (list.item(row)->background().style() != Qt::NoBrush) {
        EXPECT_EQ(colourOf(row), white) << step.index << " row " << row;
      }
    }
  }
  EXPECT_EQ(list.item(0)->background().style(), Qt::NoBrush);
}

}  // namespace

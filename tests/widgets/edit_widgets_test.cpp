// SPDX-License-Identifier: MIT
// Edit widgets: entries, signals only on change, restored text, arrow keys, selection.
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/time_edit.h"
#include "widgets/unit_format.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace {

// One entry typed over the whole field from a start value: the value and text in force once
// the edit ends, and how many change signals it drew (carrying the new value).
struct Entry {
  double start;
  const char* typed;
  double value;
  const char* text;
  int emits;
};

template <class Edit, class Signal>
void checkEntries(Edit* edit, Signal signal, Qt::Key end, std::initializer_list<Entry> rows) {
  for (const Entry& c : rows) {
    const std::string what = std::string(edit->metaObject()->className()) + " " + c.typed +
                             (end == Qt::Key_Tab ? " Tab" : " Return");
    if constexpr (std::is_same_v<Edit, IntLineEdit>)
      edit->setValue(static_cast<int>(c.start));
    else
      edit->setValue(c.start);
    edit->setFocus();
    QSignalSpy spy(edit, signal);
    edit->selectAll();
    edit->del();
    QTest::keyClicks(edit, c.typed);
    QTest::keyClick(edit, end);
    EXPECT_DOUBLE_EQ(edit->value(), c.value) << what;
    EXPECT_EQ(edit->text(), c.text) << what;
    ASSERT_EQ(spy.count(), c.emits) << what;
    if (c.emits) {
      EXPECT_DOUBLE_EQ(spy.at(0).at(0).toDouble(), c.value) << what;
    }
  }
}

// Whether the edit ends by Return or by Tab, the field shows the value in force: a number out
// of range at its bound (signalled when that is a change), refused or unchanged text as the
// value; letters can't be typed into the number fields at all.
TEST(EditEnd, ShowsTheValueInForce) {
  for (Qt::Key end : {Qt::Key_Return, Qt::Key_Tab}) {
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* frequency = new FrequencyEdit(1e6);
    auto* time = new TimeEdit;
    time->setRange(0, 10);
    auto* level = new DoubleEdit(-120, 10, 2, -20);
    auto* count = new IntLineEdit;
    count->setRange(1, 4000);
    auto* unlimited = new DoubleEdit;
    for (QWidget* w : std::initializer_list<QWidget*>{frequency, time, level, count, unlimited})
      layout->addWidget(w);
    window.show();
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));

    // A bare number takes the unit in which the value is shown.
    checkEntries(frequency, &FrequencyEdit::valueChanged, end,
                 {{1e6, "2", 2e6, "2.000000 MHz", 1},
                  {500, "2", 2, "2.000000 Hz", 1},
                  {1e9, "1.5 GHz", 1.5e9, "1.500000 GHz", 1},
                  {1e6, "-1", -1e6, "-1.000000 MHz", 1},
                  {1e9, "abc", 1e9, "1.000000 GHz", 0},
                  {1e9, "1e6", 1e9, "1.000000 GHz", 0},
                  {1e9, "1000 MHz", 1e9, "1.000000 GHz", 0}});
    checkEntries(time, &TimeEdit::valueChanged, end,
                 {{1e-3, "5 ms", 5e-3, "5.000 ms", 1},
                  {1e-3, "5m", 5e-3, "5.000 ms", 1},
                  {1e-3, "5u", 5e-6, "5.000 us", 1},
                  {1e-3, "2", 2e-3, "2.000 ms", 1},
                  {1e-3, "30 s", 10, "10.000 s", 1},
                  {1e-3, "abc", 1e-3, "1.000 ms", 0},
                  // Another spelling of the value stays as typed; an entry limited back to
                  // the value shows the value.
                  {1e-3, "1ms", 1e-3, "1ms", 0},
                  {10, "70 s", 10, "10.000 s", 0}});
    checkEntries(level, &DoubleEdit::editUpdated, end,
                 {{-20, "-130", -120, "-120", 1},
                  {-20, "15", 10, "10", 1},
                  {-20, "-", -20, "-20", 0},
                  {-20, "", -20, "-20", 0},
                  {-20, "abc", -20, "-20", 0},
                  {-20, "-35.5", -35.5, "-35.5", 1},
                  {-35.5, "-35.50", -35.5, "-35.50", 0}});
    checkEntries(count, &IntLineEdit::valueChanged, end,
                 {{12, "0", 1, "1", 1},
                  {12, "5000", 4000, "4000", 1},
                  {12, "", 12, "12", 0},
                  {12, "-", 12, "12", 0},
                  {12, "42", 42, "42", 1},
                  {42, "042", 42, "042", 0}});
    checkEntries(unlimited, &DoubleEdit::editUpdated, end,
                 {{3, "-", 3, "3", 0}, {3, "1e", 3, "3", 0}, {3, "1e3", 1000, "1e3", 1}});
  }
}

TEST(TimeEdit, NewLimitsApplyToTheValueSilently) {
  TimeEdit edit;  // 1 ms
  QSignalSpy spy(&edit, &TimeEdit::valueChanged);
  edit.setRange(0.01, 1);
  EXPECT_EQ(edit.value(), 0.01);
  EXPECT_EQ(edit.text(), "10.000 ms");
  EXPECT_EQ(spy.count(), 0);
}

TEST(DoubleEdit, NarrowestWidthHoldsTheRange) {
  DoubleEdit level(-120, 10, 2, -20);
  EXPECT_GT(level.minimumSizeHint().width(), level.fontMetrics().horizontalAdvance("-107.55"));
}

// One arrow-key case for any of the three stepping edits.
struct ArrowCase {
  bool arrowKeys;
  Qt::Key key;
  double start, step, expected;
  int emits;
};

const ArrowCase kArrowCases[] = {
    {true, Qt::Key_Up, 10, 5, 15, 1},
    {true, Qt::Key_Down, 10, 5, 5, 1},
    {false, Qt::Key_Up, 10, 5, 10, 0},
    {true, Qt::Key_Left, 10, 5, 10, 0},
};

template <typename Edit, typename Signal>
void pressArrow(Edit& edit, Signal signal, const ArrowCase& c, double scale) {
  QSignalSpy spy(&edit, signal);
  QTest::keyClick(&edit, c.key);
  EXPECT_EQ(edit.value(), c.expected * scale);
  EXPECT_EQ(spy.count(), c.emits);
}

TEST(ArrowKeys, StepOnlyWhenEnabled) {
  for (const ArrowCase& c : kArrowCases) {
    DoubleEdit level(-120, 120, 2, c.start);
    level.setStep(c.step);
    level.setArrowKeys(c.arrowKeys);
    pressArrow(level, &DoubleEdit::editUpdated, c, 1.0);
    EXPECT_EQ(level.text(), QString::number(c.expected));

    FrequencyEdit frequency(c.start * 1e6);
    frequency.setStep(c.step * 1e6);
    frequency.setArrowKeys(c.arrowKeys);
    pressArrow(frequency, &FrequencyEdit::valueChanged, c, 1e6);
    EXPECT_EQ(frequency.text(), formatFrequency(c.expected * 1e6));

    IntLineEdit count;
    count.setValue(int(c.start));
    count.setStep(c.arrowKeys, int(c.step));
    pressArrow(count, &IntLineEdit::valueChanged, c, 1.0);
    EXPECT_EQ(count.text(), QString::number(int(c.expected)));
  }
}

// Arrow steps don't clamp to the validator; the receiving slot does. They mustn't overflow.
TEST(ArrowKeys, IntLineEditPassesRangeButNotIntLimits) {
  IntLineEdit edit;
  edit.setRange(0, 39);
  edit.setValue(39);
  edit.setStep(true, 1);
  QSignalSpy spy(&edit, &IntLineEdit::valueChanged);
  QTest::keyClick(&edit, Qt::Key_Up);
  EXPECT_EQ(edit.value(), 40);
  ASSERT_EQ(spy.count(), 1);
  EXPECT_EQ(spy.at(0).at(0).toInt(), 40);

  edit.setValue(std::numeric_limits<int>::max());
  QTest::keyClick(&edit, Qt::Key_Up);
  EXPECT_EQ(edit.value(), std::numeric_limits<int>::max());
}

TEST(Selection, ClickSelectsAllOnlyWithoutSelection) {
  std::unique_ptr<QLineEdit> edits[] = {
      std::make_unique<DoubleEdit>(-120, 10, 2, -20.25),
      std::make_unique<IntLineEdit>(),
      std::make_unique<FrequencyEdit>(1e9),
      std::make_unique<TimeEdit>(),
  };
  for (auto& edit : edits) {
    const QString name = edit->metaObject()->className();
    edit->deselect();
    QTest::mouseClick(edit.get(), Qt::LeftButton);
    EXPECT_EQ(edit->selectedText(), edit->text()) << name.toStdString();

    edit->setSelection(0, 1);
    QTest::mouseRelease(edit.get(), Qt::LeftButton);
    EXPECT_EQ(edit->selectedText().length(), 1) << name.toStdString();
  }
}

}  // namespace

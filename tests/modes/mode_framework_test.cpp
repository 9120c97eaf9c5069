// SPDX-License-Identifier: MIT
// ModeWidget construction and MyStackedWidget lookups by mode index.
#include "modes/mode_widget.h"
#include "modes/my_stacked_widget.h"
#include "widgets/my_form_layout.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QSpacerItem>

#include <gtest/gtest.h>

namespace {

class TestView : public ModeWidget {
public:
  TestView(const QString& name, int index, bool addSpacer = true)
      : ModeWidget(name, index, nullptr, addSpacer) {}
  MyFormLayout* form() const { return formLayout; }
  void setDefaults() override {}
  void saveSettings(QSettings*) override {}
  void loadSettings(QSettings*) override {}
};

TEST(ModeWidget, FormBesideAnExpandingSpacer) {
  TestView view("AM", 1);
  EXPECT_EQ(view.modeName(), "AM");
  EXPECT_EQ(view.modeIndex(), 1);
  ASSERT_NE(view.enabledCheck(), nullptr);
  EXPECT_EQ(view.enabledCheck()->parentWidget(), &view);

  auto* row = qobject_cast<QHBoxLayout*>(view.layout());
  ASSERT_NE(row, nullptr);
  ASSERT_EQ(row->count(), 2);
  EXPECT_EQ(row->itemAt(0)->layout(), view.form());
  QSpacerItem* spacer = row->itemAt(1)->spacerItem();
  ASSERT_NE(spacer, nullptr);
  EXPECT_EQ(spacer->sizeHint(), QSize(10, 10));
  EXPECT_EQ(spacer->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
  EXPECT_EQ(spacer->sizePolicy().verticalPolicy(), QSizePolicy::Minimum);
}

TEST(ModeWidget, WithoutSpacerTheViewLaysOutItsForm) {
  TestView view("Streaming", 19, false);
  EXPECT_EQ(view.layout(), nullptr);
  ASSERT_NE(view.form(), nullptr);
  EXPECT_EQ(view.form()->parent(), nullptr);
}

TEST(MyStackedWidget, FindsAndShowsPagesByModeIndex) {
  MyStackedWidget stack;
  TestView am("AM", 1), fm("FM", 2), streaming("Streaming", 19);
  for (TestView* view : {&am, &fm, &streaming}) stack.addMode(view->modeIndex(), view);

  ASSERT_EQ(stack.count(), 3);
  ASSERT_EQ(stack.entries().size(), 3u);
  EXPECT_EQ(stack.entries()[2], MyStackedWidget::Entry(19, &streaming));
  EXPECT_EQ(stack.widget(1), &fm);

  const struct {
    int index;
    ModeWidget* found;
    ModeWidget* shown;  // current page after showMode
  } steps[] = {
      {19, &streaming, &streaming},
      {9, nullptr, &streaming},  // unknown index: page unchanged
      {0, nullptr, &streaming},
      {2, &fm, &fm},
      {1, &am, &am},
  };
  for (const auto& step : steps) {
    EXPECT_EQ(stack.findMode(step.index), step.found) << step.index;
    stack.showMode(step.index);
    EXPECT_EQ(stack.currentWidget(), step.shown) << step.index;
  }
}

}  // namespace

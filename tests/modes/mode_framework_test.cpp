// SPDX-License-Identifier: MIT
// MyStackedWidget: pages found and shown by mode index.
#include "modes/mode_widget.h"
#include "modes/my_stacked_widget.h"

#include <gtest/gtest.h>

namespace {

class TestView : public ModeWidget {
public:
  TestView(const QString& name, int index) : ModeWidget(name, index) {}
  void setDefaults() override {}
  void saveSettings(QSettings*) override {}
  void loadSettings(QSettings*) override {}
};

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

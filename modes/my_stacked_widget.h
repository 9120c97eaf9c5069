// SPDX-License-Identifier: MIT
// Stack of the mode views, addressed by mode index rather than by page number.
#pragma once

#include <QStackedWidget>

#include <utility>
#include <vector>

class ModeWidget;

class MyStackedWidget : public QStackedWidget {
  Q_OBJECT

public:
  // (mode index, view), in the order of the pages.
  using Entry = std::pair<int, ModeWidget*>;

  explicit MyStackedWidget(QWidget* parent = nullptr);

  // Appends the view as the next page.
  void addMode(int modeIndex, ModeWidget* view);
  // The view of a mode index, or null.
  ModeWidget* findMode(int modeIndex) const;
  const std::vector<Entry>& entries() const { return modeEntries; }

public slots:
  // Shows the page of a mode index; an unknown index leaves the page as it is.
  void showMode(int modeIndex);

private:
  std::vector<Entry> modeEntries;
};

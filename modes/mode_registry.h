// SPDX-License-Identifier: MIT
// The tables that mode units fill when they register: views, generators and remote rows.
#pragma once

#include <functional>
#include <vector>

class ModeHost;
class ModeWidget;
class Scpi;

// Filled once, while the controller is built, before the streaming thread first starts; read
// afterwards from the user interface thread (views, rows) and the streaming thread (generators).
class ModeRegistry {
public:
  // Runs on the streaming thread and plays until the run flag falls, or returns at once.
  using Generator = std::function<void(ModeHost&)>;
  // Answers one row of the command table; `row` is the row's number.
  using RowHandler = std::function<void(ModeHost&, Scpi&, int row)>;

  // Mode indices run from 0 to 19; an index without a generator runs nothing.
  static constexpr int modeIndexCount = 20;

  // The view joins the mode list and the stack, in the order of the calls; the controller
  // takes ownership.
  void addView(ModeWidget* view);
  // What the streaming thread runs for `modeIndex`, with or without a view of that index.
  void setGenerator(int modeIndex, Generator generator);
  // Rows `firstRow` to `lastRow` of the command table go to `handler`.
  void addRows(int firstRow, int lastRow, RowHandler handler);

  // The usual unit: a view, the generator that reads it and the rows it answers.
  template <class View>
  void addMode(View* view, void (*generate)(const View&, ModeHost&), int firstRow, int lastRow,
               void (*handleRow)(View&, ModeHost&, Scpi&, int)) {
    addView(view);
    setGenerator(view->modeIndex(), [view, generate](ModeHost& host) { generate(*view, host); });
    addRows(firstRow, lastRow, [view, handleRow](ModeHost& host, Scpi& command, int row) {
      handleRow(*view, host, command, row);
    });
  }

  const std::vector<ModeWidget*>& views() const { return views_; }
  // Null when the index runs nothing.
  const Generator* generator(int modeIndex) const;
  // Null when no unit owns the row.
  const RowHandler* rowHandler(int row) const;

private:
  std::vector<ModeWidget*> views_;
  std::vector<Generator> generators_ = std::vector<Generator>(modeIndexCount);
  std::vector<RowHandler> rows_;
};

// SPDX-License-Identifier: MIT
// The tables that mode units fill when they register.
#include "modes/mode_registry.h"

#include <cassert>

void ModeRegistry::addView(ModeWidget* view) { views_.push_back(view); }

void ModeRegistry::setGenerator(int modeIndex, Generator generator) {
  assert(modeIndex >= 0 && modeIndex < modeIndexCount && !generators_[modeIndex]);
  if (modeIndex < 0 || modeIndex >= modeIndexCount) return;
  generators_[modeIndex] = std::move(generator);
}

void ModeRegistry::addRows(int firstRow, int lastRow, RowHandler handler) {
  if (firstRow < 1 || lastRow < firstRow) return;
  if (static_cast<int>(rows_.size()) <= lastRow) rows_.resize(lastRow + 1);
  for (int row = firstRow; row <= lastRow; ++row) {
    assert(!rows_[row] && "a row has one owner");
    rows_[row] = handler;
  }
}

const ModeRegistry::Generator* ModeRegistry::generator(int modeIndex) const {
  if (modeIndex < 0 || modeIndex >= modeIndexCount || !generators_[modeIndex]) return nullptr;
  return &generators_[modeIndex];
}

const ModeRegistry::RowHandler* ModeRegistry::rowHandler(int row) const {
  if (row < 1 || row >= static_cast<int>(rows_.size()) || !rows_[row]) return nullptr;
  return &rows_[row];
}

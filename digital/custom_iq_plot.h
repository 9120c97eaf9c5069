// SPDX-License-Identifier: MIT
// Constellation view of the custom modulation editor: the points in a square of -1.2 .. 1.2.
#pragma once

#include "dsp/sample.h"

#include <QWidget>

#include <vector>

// Draws the points as they stand, before any scaling to RMS: a point beyond 1.2 falls outside
// the square. The points belong to the editor, which calls update() after each change.
class CustomIQPlot : public QWidget {
  Q_OBJECT

public:
  explicit CustomIQPlot(const std::vector<Sample>* points, QWidget* parent = nullptr);

  QSize sizeHint() const override { return {420, 400}; }

  // The half side of the square in units.
  static constexpr double range = 1.2;

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  const std::vector<Sample>* points;
};

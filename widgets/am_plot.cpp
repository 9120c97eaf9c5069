// SPDX-License-Identifier: MIT
// Titled X/Y graph with a dotted grid, eleven Y labels and line or marker series.
#include "widgets/am_plot.h"

#include <QFontMetrics>
#include <QMutexLocker>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

AMPlot::AMPlot(QWidget* parent) : QWidget(parent) {
  setAutoFillBackground(true);
  QPalette white = palette();
  white.setColor(QPalette::Window, background);
  setPalette(white);
}

AMPlot::~AMPlot() { clearSeries(); }

PlotSeries* AMPlot::addSeries() {
  QMutexLocker locker(&lock);
  series.append(new PlotSeries);
  return series.last();
}

void AMPlot::clearSeries() {
  QMutexLocker locker(&lock);
  qDeleteAll(series);
  series.clear();
}

void AMPlot::setXRange(double min, double max) {
  xMin = min;
  xMax = max;
}

void AMPlot::setYRange(double min, double max) {
  yMin = min;
  yMax = max;
}

QString AMPlot::formatLabel(double value) {
  QString text = QString::asprintf("%f", value);
  while (text.endsWith('0')) text.chop(1);
  if (text.endsWith('.')) text.chop(1);
  return text;
}

QStringList AMPlot::yAxisLabels(double yMin, double yMax) {
  QStringList labels;
  for (int k = 0; k <= 10; ++k) labels.append(formatLabel(yMax - (yMax - yMin) / 10 * k));
  return labels;
}

void AMPlot::paintEvent(QPaintEvent*) {
  QMutexLocker locker(&lock);

  // 1. Background.
  if (palette().color(QPalette::Window) != background) {
    QPalette changed = palette();
    changed.setColor(QPalette::Window, background);
    setPalette(changed);
  }

  QPainter painter(this);
  const QFontMetrics metrics(font);

  // 2., 3. The plot rectangle, with room for the X labels below it.
  QRect plot(20, 5, width() - 40, height() - 40);
  const int textHeight = metrics.boundingRect("0123456789").height();
  plot.setHeight(height() - textHeight - plot.top());

  // 4. Title.
  painter.setFont(font);
  painter.setPen(textColor);
  if (!title.isEmpty()) {
    const int titleHeight = metrics.boundingRect(title).height();
    painter.drawText(QRect(0, plot.top(), width(), titleHeight), Qt::AlignHCenter | Qt::AlignTop,
                     title);
    plot.setTop(plot.top() + titleHeight);  // the bottom stays: the height shrinks as much
  }

  // 5. Y labels and the room they take.
  const QStringList yLabels = yAxisLabels(yMin, yMax);
  int labelWidth = 0;
  for (const QString& label : yLabels)
    labelWidth = std::max(labelWidth, metrics.boundingRect(label).width());
  plot.setLeft(labelWidth + 20);  // the right stays: the width shrinks as much

  // 6. Y labels right-aligned against the rectangle, each at its grid line.
  const int fontHeight = metrics.height();
  for (int k = 0; k <= 10; ++k) {
    const int y = plot.top() + static_cast<int>(std::lround(plot.height() * k / 10.0));
    painter.drawText(QRect(0, y - fontHeight / 2, plot.left() - 3, fontHeight),
                     Qt::AlignRight | Qt::AlignVCenter, yLabels[k]);
  }

  // 7. X labels and the axis label under the rectangle.
  const QRect below(plot.left(), plot.bottom() + 1, plot.width(), height() - plot.bottom() - 1);
  painter.drawText(below, Qt::AlignLeft | Qt::AlignTop, formatLabel(xMin));
  painter.drawText(below, Qt::AlignRight | Qt::AlignTop, formatLabel(xMax));
  painter.drawText(below, Qt::AlignHCenter | Qt::AlignTop, xLabel);

  // 8. Frames.
  painter.setPen(Qt::black);
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(plot);
  painter.setPen(QColor(130, 135, 144));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));

  const double xSpan = xMax - xMin;
  const double ySpan = yMax - yMin;
  const bool drawable = std::isfinite(xSpan) && std::isfinite(ySpan) && xSpan != 0.0 &&
                        ySpan != 0.0 && plot.width() > 0 && plot.height() > 0;
  if (drawable) {
    // 9. From here on drawing is in data units, clipped to the rectangle.
    painter.setClipRect(plot);
    painter.translate(plot.topLeft());
    painter.scale(plot.width() / xSpan, -plot.height() / ySpan);
    painter.translate(-xMin, -yMax);

    // 10. Grid.
    if (showGrid) {
      QPen grid(Qt::black, 1, Qt::DotLine);
      grid.setCosmetic(true);
      painter.setPen(grid);
      painter.setRenderHint(QPainter::Antialiasing, false);
      for (int k = 1; k <= 9; ++k) {
        const double y = yMin + ySpan * k / 10;
        const double x = xMin + xSpan * k / 10;
        painter.drawLine(QPointF(xMin, y), QPointF(xMax, y));
        painter.drawLine(QPointF(x, yMin), QPointF(x, yMax));
      }
    }

    // 11. Series.
    painter.setRenderHint(QPainter::Antialiasing, true);
    const double markerX = 2.0 * xSpan / plot.width();  // 2 pixels in data units
    const double markerY = 2.0 * std::fabs(ySpan) / plot.height();
    for (const PlotSeries* s : series) {
      if (s->points.empty()) continue;
      QPen pen(s->color, s->width, Qt::SolidLine);
      pen.setCosmetic(true);  // the width is in pixels, not in data units
      painter.setPen(pen);
      painter.setBrush(s->color);
      if (s->style == 1 || s->style == 2) {
        QPolygonF line;
        line.reserve(static_cast<int>(s->points.size()));
        for (const auto& [x, y] : s->points) line.append(QPointF(x, y));
        painter.drawPolyline(line);
      }
      if (s->style == 0 || s->style == 2) {
        for (const auto& [x, y] : s->points) {
          painter.drawLine(QPointF(x - markerX, y - markerY), QPointF(x + markerX, y + markerY));
          painter.drawLine(QPointF(x - markerX, y + markerY), QPointF(x + markerX, y - markerY));
        }
      }
    }
  }

  // 12.
  painter.setClipping(false);
  painter.resetTransform();
  painter.end();
}

// SPDX-License-Identifier: MIT
// Constellation view of the custom modulation editor: the points in a square of -1.2 .. 1.2.
#include "digital/custom_iq_plot.h"

#include <QPainter>
#include <QPen>

#include <algorithm>

CustomIQPlot::CustomIQPlot(const std::vector<Sample>* points, QWidget* parent)
    : QWidget(parent), points(points) {
  setMinimumSize(200, 180);
}

void CustomIQPlot::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);

  // A square centred in the widget, with 19 pixels to spare, spanning -1.2 .. 1.2 both ways.
  const double side = std::min(width(), height()) - 1 - 19;
  if (side <= 0) return;                    // no room for a square
  const double scale = side * 0.5 / range;  // pixels per unit
  const QPointF centre(width() / 2.0, height() / 2.0);
  const QRectF square(centre.x() - side / 2, centre.y() - side / 2, side, side);

  painter.setPen(QPen(Qt::black, 2));
  painter.setBrush(Qt::white);
  painter.drawRect(square);

  painter.save();
  painter.translate(centre);
  painter.scale(scale, -scale);  // Y upwards
  QPen axis(Qt::gray, 1);
  axis.setCosmetic(true);
  painter.setPen(axis);
  painter.drawLine(QPointF(-range, 0), QPointF(range, 0));
  painter.drawLine(QPointF(0, -range), QPointF(0, range));

  // One pixel of radius, widened by the pen; the pen's width counts in pixels, not units,
  // or a single dot would cover the square.
  QPen dot(Qt::red, 4.0, Qt::SolidLine, Qt::RoundCap);
  dot.setCosmetic(true);
  painter.setPen(dot);
  painter.setBrush(Qt::red);
  const double radius = 1.0 / scale;
  if (points)
    for (const Sample& point : *points)
      painter.drawEllipse(QPointF(point.real(), point.imag()), radius, radius);
  painter.restore();

  painter.setPen(Qt::black);
  const double textHeight = painter.fontMetrics().height();
  const double right = std::max(square.left() - 2, 0.0);
  const auto label = [&](double y, const char* text) {
    painter.drawText(QRectF(0, y - textHeight / 2, right, textHeight),
                     Qt::AlignRight | Qt::AlignVCenter, text);
  };
  label(square.top(), "1.2");
  label(square.bottom(), "-1.2");
}

// SPDX-License-Identifier: MIT
// AMPlot: label texts, and what a render into an image shows of frame, grid, series and clip.
#include "widgets/am_plot.h"

#include <QImage>
#include <QRect>

#include <gtest/gtest.h>

namespace {

TEST(AMPlot, LabelFormatCutsTrailingZerosThenThePoint) {
  const struct {
    double value;
    const char* text;
  } cases[] = {{0.25, "0.25"}, {-90, "-90"}, {100, "100"}, {1e-7, "0"}, {0.1234567, "0.123457"}};
  for (const auto& c : cases) EXPECT_EQ(AMPlot::formatLabel(c.value), c.text) << c.value;

  EXPECT_EQ(AMPlot::yAxisLabels(-90, 10), QStringList({"10", "0", "-10", "-20", "-30", "-40", "-50",
                                                       "-60", "-70", "-80", "-90"}));
  EXPECT_EQ(AMPlot::yAxisLabels(0, 1).at(1), "0.9");
  EXPECT_EQ(AMPlot::yAxisLabels(0, 2.5).at(9), "0.25");
}

// A render with blue text, so that black pixels are only the frame and the grid.
struct Render {
  QImage image;
  QRect frame;  // bounding box of the black pixels: the plot rectangle's frame
  int blackInside = 0;
  int redOutsideFrame = 0;
  int red = 0;
};

// Red, also where antialiasing blends it with white.
bool reddish(QRgb p) {
  return qRed(p) > 200 && qRed(p) - qGreen(p) > 40 && qRed(p) - qBlue(p) > 40;
}

Render render(AMPlot& plot) {
  plot.resize(400, 300);
  plot.textColor = Qt::blue;
  Render r;
  r.image = QImage(plot.size(), QImage::Format_RGB32);
  r.image.fill(Qt::gray);
  plot.render(&r.image);
  for (int y = 0; y < r.image.height(); ++y)
    for (int x = 0; x < r.image.width(); ++x)
      if (r.image.pixel(x, y) == qRgb(0, 0, 0)) r.frame |= QRect(x, y, 1, 1);
  for (int y = 0; y < r.image.height(); ++y) {
    for (int x = 0; x < r.image.width(); ++x) {
      const QRgb p = r.image.pixel(x, y);
      const bool inside = r.frame.adjusted(1, 1, -1, -1).contains(x, y);
      if (inside && p == qRgb(0, 0, 0)) ++r.blackInside;
      if (reddish(p)) {
        ++r.red;
        if (!r.frame.contains(x, y)) ++r.redOutsideFrame;
      }
    }
  }
  return r;
}

PlotSeries* addRed(AMPlot& plot, std::vector<std::pair<double, double>> points, int style = 1) {
  PlotSeries* s = plot.addSeries();
  s->color = Qt::red;
  s->style = style;
  s->points = std::move(points);
  return s;
}

TEST(AMPlot, WithoutSeriesFrameGridAndBackgroundAreDrawn) {
  AMPlot plot;
  plot.setYRange(-90, 10);
  const Render r = render(plot);
  EXPECT_EQ(r.image.pixel(0, 0), qRgb(130, 135, 144));  // the widget's frame
  EXPECT_EQ(r.image.pixel(399, 299), qRgb(130, 135, 144));
  EXPECT_EQ(r.image.pixel(5, 150), qRgb(255, 255, 255));  // white background
  // The rectangle: right edge 20 from the widget's, top 5 below; Y labels at its left.
  EXPECT_NEAR(r.frame.right(), 380, 1);
  EXPECT_NEAR(r.frame.top(), 5, 1);
  EXPECT_GT(r.frame.left(), 30);
  EXPECT_GT(r.blackInside, 100);  // the dotted grid

  plot.showGrid = false;
  EXPECT_EQ(render(plot).blackInside, 0);

  // A title moves the rectangle's top down.
  plot.setTitle("Spectrum");
  EXPECT_GT(render(plot).frame.top(), r.frame.top() + 5);
}

TEST(AMPlot, SeriesDrawInDataUnitsAndEmptyOnesAreSkipped) {
  AMPlot plot;
  plot.showGrid = false;
  plot.setXRange(1, 3);
  plot.setYRange(-1, 1);
  addRed(plot, {});
  const Render empty = render(plot);
  EXPECT_EQ(empty.red, 0);

  // A line at y = 0.5 lies a quarter of the way down the rectangle, from edge to edge.
  addRed(plot, {{1, 0.5}, {3, 0.5}});
  const Render r = render(plot);
  const int row = r.frame.top() + (r.frame.height() - 1) / 4;
  int redInRow = 0;
  for (int x = r.frame.left() + 1; x < r.frame.right(); ++x)
    redInRow += reddish(r.image.pixel(x, row)) || reddish(r.image.pixel(x, row + 1)) ||
                reddish(r.image.pixel(x, row - 1));
  EXPECT_GE(redInRow, r.frame.width() - 4);
  EXPECT_LE(r.red, 3 * r.frame.width());  // and nowhere else

  // Markers only: an X of 2 pixels each way round a point in the middle.
  plot.clearSeries();
  addRed(plot, {{2, 0}}, 0);
  const Render m = render(plot);
  EXPECT_GT(m.red, 3);
  EXPECT_LT(m.red, 30);
}

TEST(AMPlot, PointsFarOutsideAreClippedToTheRectangle) {
  AMPlot plot;
  plot.setXRange(0, 1);
  plot.setYRange(0, 1);
  addRed(plot, {{0.5, 0.5}, {1e6, -1e6}, {0.2, 0.9}, {-5e3, 40}, {0.5, 1e12}}, 2);
  const Render r = render(plot);
  EXPECT_GT(r.red, 50);
  EXPECT_EQ(r.redOutsideFrame, 0);
}

}  // namespace

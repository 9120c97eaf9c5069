// SPDX-License-Identifier: MIT
// Titled X/Y graph with a dotted grid, eleven Y labels and line or marker series.
#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <utility>
#include <vector>

// One series of an AMPlot. A caller fills it by resizing `points` and writing X, Y pairs.
struct PlotSeries {
  QString name;
  std::vector<std::pair<double, double>> points;  // X, Y in data units
  QColor color;                                   // invalid until set
  float width = 1.0f;                             // pen width in pixels
  int style = 1;                                  // 0 markers only, 1 line only, 2 both
};

// The fields are public; hold `lock` while changing them from another
// thread than the painter's. The `font` field hides QWidget::font(): it is the plot's font
// for all texts, independent of the widget's own.
class AMPlot : public QWidget {
  Q_OBJECT

public:
  explicit AMPlot(QWidget* parent = nullptr);
  ~AMPlot() override;

  // Appends a new series, owned by the plot, drawn after those before it.
  PlotSeries* addSeries();
  // Deletes all series; pointers from addSeries become invalid.
  void clearSeries();
  void setTitle(const QString& text) { title = text; }
  void setXLabel(const QString& text) { xLabel = text; }
  void setYLabel(const QString& text) { yLabel = text; }
  void setXRange(double min, double max);
  void setYRange(double min, double max);

  // The number format of the axis labels: "%f", trailing "0"s cut, then a trailing ".".
  static QString formatLabel(double value);
  // The eleven Y labels, top to bottom: yMax - (yMax - yMin) / 10 x k for k = 0 .. 10.
  static QStringList yAxisLabels(double yMin, double yMax);

  QColor background = Qt::white;
  double xMin = 0.0;
  double xMax = 1.0;
  double yMin = 0.0;
  double yMax = 1.0;
  QString xLabel;
  QString yLabel;  // kept, not painted
  QList<PlotSeries*> series;
  bool showGrid = true;
  QFont font;
  QColor textColor = Qt::black;
  QString title;
  QMutex lock;  // held for all of a paint and around changes to the series

protected:
  // Background, layout, title, labels, frames, grid, series, in that order. A range of zero width
  // (or not finite) gets its frame, title and labels but no grid and no data: the scale would
  // divide by zero.
  void paintEvent(QPaintEvent* event) override;
};

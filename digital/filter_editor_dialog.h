// SPDX-License-Identifier: MIT
// The frame the two filter editors share: table, buttons, plots, file and accept slots.
#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class AMPlot;
class BasicTableWidget;

// Window "Custom Filter": the table of taps on the left above the buttons, two a row, and the
// "Impulse" and "Spectrum" plots on the right.
class FilterEditorDialog : public QDialog {
  Q_OBJECT

public:
  // What loadFilter and saveFilter do once the file dialog has given a name; false on failure,
  // with the taps unchanged.
  virtual bool loadFilterFile(const QString& path) = 0;
  virtual bool saveFilterFile(const QString& path) const = 0;

public slots:
  void loadFilter();
  void saveFilter();
  // Accepts 4 to 256 taps; otherwise warns "Invalid Number of Taps" and stays open.
  void finalCheck();

protected:
  struct Action {
    QString text;
    std::function<void()> run;
  };

  FilterEditorDialog(const QStringList& columns, QWidget* parent);
  // Puts `note` (if any) and then the buttons of `actions` under the table.
  void layOut(const std::vector<Action>& actions, QWidget* note = nullptr);
  virtual int tapCount() const = 0;

  BasicTableWidget* table;
  AMPlot* impulsePlot;
  AMPlot* spectrumPlot;
};

// SPDX-License-Identifier: MIT
// Editor of the real pulse-shaping taps of the digital mode, with built-in designs and files.
#pragma once

#include "digital/filter_editor_dialog.h"

#include <QString>

#include <vector>

class QTableWidgetItem;

// Window "Custom Filter": a one-column table "Filter Tap", the impulse and spectrum plots and
// the design and file buttons. The taps reach the caller through taps() after acceptance;
// accepting takes 4 to 256 taps.
class PulseShapingFilterEditorDialog : public FilterEditorDialog {
  Q_OBJECT

public:
  // os: samples a symbol of the built-in designs, which get os x 8 + 1 taps.
  PulseShapingFilterEditorDialog(const std::vector<float>& taps, int os, QWidget* parent = nullptr);

  std::vector<float> taps() const { return filterTaps; }

  // What loadFilter and saveFilter do once the file dialog has given a name; false on failure,
  // with the taps unchanged. A file holds one tap a line in field 0; the read ends at the first
  // line whose field 0 is not a number (empty, words) or at the end. Values are limited to
  // -1024 .. 1024. Files above filter_editor::maxFileBytes, or
  // giving more than filter_editor::maxFileTaps taps, are refused.
  bool loadFilterFile(const QString& path) override;
  bool saveFilterFile(const QString& path) const override;

public slots:
  // Reads every cell back: a cell that can't be read keeps its tap, a cell whose text is still
  // the one shown keeps its exact tap (the table shows six decimals), values are limited to
  // -1024 .. 1024; then the table and plots are redrawn.
  void tableUpdated(QTableWidgetItem* item);
  void addRow();
  void removeRow();
  void loadRRC();
  void loadGaussian();
  void loadRectFilter();
  void loadHalfSine();

protected:
  int tapCount() const override { return static_cast<int>(filterTaps.size()); }

private:
  template <class Design>
  void loadDesign(Design design);
  void refresh();
  void updatePlots();

  std::vector<float> filterTaps;
  int os;
  int designTaps;  // os x 8 + 1
};

// SPDX-License-Identifier: MIT
// Editor of the complex taps of the impairments' channel filter.
#pragma once

#include "digital/filter_editor_dialog.h"
#include "dsp/sample.h"

#include <QString>

#include <vector>

class QTableWidgetItem;

// Window "Custom Filter": a table of "Real" and "Imag" columns, the impulse plot (real parts
// red, imaginary parts green) and the centred spectrum. The taps reach the caller through
// taps() after acceptance; accepting takes 4 to 256 taps.
class ChannelFilterEditorDialog : public FilterEditorDialog {
  Q_OBJECT

public:
  explicit ChannelFilterEditorDialog(const std::vector<Sample>& taps, QWidget* parent = nullptr);

  std::vector<Sample> taps() const { return filterTaps; }

  // What loadFilter and saveFilter do once the file dialog has given a name; false on failure,
  // with the taps unchanged. A file holds one tap a line, real part in field 0 and imaginary
  // part in field 1; the read ends at the first line whose field 0 is not a number (empty,
  // words) or at the end. A field 1 that is missing or not a number reads 0. Values are limited
  // to -1024 .. 1024. Files above filter_editor::maxFileBytes, or
  // giving more than filter_editor::maxFileTaps taps, are refused.
  bool loadFilterFile(const QString& path) override;
  bool saveFilterFile(const QString& path) const override;

public slots:
  // As in PulseShapingFilterEditorDialog, for each part of each tap.
  void tableUpdated(QTableWidgetItem* item);
  void addRow();
  void removeRow();
  // 15 taps, all 0 but tap 7, which is 1: the pass-through filter.
  void loadDefault();
  // Scales the taps to unit energy; taps of no energy stay as they are.
  void normalize();

protected:
  int tapCount() const override { return static_cast<int>(filterTaps.size()); }

private:
  void refresh();
  void updatePlots();

  std::vector<Sample> filterTaps;
};

// SPDX-License-Identifier: MIT
// Table editor of tones (frequency offset and phase a row), saved and loaded as CSV.
#pragma once

#include <QDialog>
#include <QString>

class DoubleEdit;
class FrequencyEdit;
class QTableWidget;

// One row a tone: column 0 the offset from the carrier in Hz (-1e6 to 1e6), column 1 the
// phase in radians (-3.141592 to 3.141592). Every cell edit re-validates the whole table.
class MtoneEditor : public QDialog {
  Q_OBJECT

public:
  explicit MtoneEditor(QWidget* parent = nullptr);

  int rowCount() const;
  double frequency(int row) const;  // Hz
  double phase(int row) const;      // radians
  // Stores the values as given, without validation and without a signal.
  void setRow(int row, double frequencyHz, double phaseRad);

  // What loadTable and saveTable do once the dialog has given a name. A file that can't be
  // opened changes nothing and returns false.
  bool loadTableFile(const QString& path);
  bool saveTableFile(const QString& path) const;

  static constexpr double maxFrequencyHz = 1e6;
  static constexpr double maxPhaseRad = 3.141592;

public slots:
  void validateTable();
  void addRow();
  void removeRow();
  void loadTable();
  void saveTable();
  void clearTable();
  void finalValidate();

private:
  FrequencyEdit* frequencyCell(int row) const;
  DoubleEdit* phaseCell(int row) const;

  QTableWidget* table;
};

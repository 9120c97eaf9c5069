// SPDX-License-Identifier: MIT
// Editor of the user's linear modulation: points, differential offsets, offset rail, files.
#pragma once

#include "digital/modulation_map.h"

#include <QDialog>
#include <QString>

class BasicTableWidget;
class CustomIQPlot;
class MyComboBox;
class QPushButton;
class QTableWidgetItem;

// Window "Custom I/Q Modulation Editor": the table of points ("Symbol", "Data", "I", "Q") above
// the buttons, two a row, and the constellation on the right. Modal, on a copy: the map reaches
// the caller through modulationMap() after acceptance, which takes a power of two of at least
// 2 points. The offsets of a map stay in it while "Differential Encoding" is off.
class CustomIQDialog : public QDialog {
  Q_OBJECT

public:
  explicit CustomIQDialog(const ModulationMap& map, QWidget* parent = nullptr);

  ModulationMap modulationMap() const { return map; }

  // What loadModulation and saveModulation do once the file dialog has given a name. A file
  // that is not a valid modulation file of version 1 is ignored: false, and nothing changes.
  bool loadModulationFile(const QString& path);
  bool saveModulationFile(const QString& path) const;

public slots:
  void addRow();
  void removeRow();
  void diffEncodingBtnPressed();
  void defineDiffEncoding();
  void qOffsetBtnPressed();
  // Replaces the map by the built-in one the combo box names, then returns it to its first item.
  void loadDefaultMod();
  void loadModulation();
  void saveModulation();
  // The QPSK map, so that the table stays one the dialog accepts.
  void clearTable();
  // Reads the typed "I" and "Q" cells as floats, limited to -1 .. 1; a cell that can't be read
  // keeps its old value.
  void tableUpdated(QTableWidgetItem* item);
  void finalCheck();

private:
  void layOut();
  QPushButton* makeButton(const char* text, void (CustomIQDialog::*slot)());
  // After the map has been replaced as a whole: the table, the plot and the check buttons.
  void showMap();
  void refresh();

  ModulationMap map;
  CustomIQPlot* plot;
  BasicTableWidget* table;
  QPushButton* addButton;
  QPushButton* removeButton;
  QPushButton* differentialButton;
  QPushButton* defineDifferentialButton;
  QPushButton* offsetQButton;
  MyComboBox* defaultMapBox;
  QPushButton* importButton;
  QPushButton* exportButton;
  QPushButton* clearButton;
  QPushButton* acceptButton;
};

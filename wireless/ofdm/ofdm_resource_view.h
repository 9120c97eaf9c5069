// SPDX-License-Identifier: MIT
// Form of one OFDM resource: where it sits in the grid and what it fills it with.
#pragma once

#include "wireless/ofdm/ofdm_config.h"

#include <QWidget>

class DoubleEdit;
class IQLineEdit;
class MyComboBox;
class QCheckBox;
class QLabel;
class QLineEdit;
class RangeEditor;
class SymbolLineEdit;

// Shows the resource it is given and writes every control back into it on each change. The
// resource belongs to the caller, who must hand over a new pointer (or null) before the list
// that holds it moves.
class OFDMResourceView : public QWidget {
  Q_OBJECT

public:
  explicit OFDMResourceView(QWidget* parent = nullptr);

  // Null disables the form.
  void setResource(OFDMResource* resource);
  OFDMResource* resource() const { return shown; }

signals:
  void nameChanged(QString);

public slots:
  void updateResource();

private:
  void addRows();
  void connectControls();
  void showResource();
  void refreshRows();

  OFDMResource* shown = nullptr;
  bool filling = false;  // the controls are being set from the resource

  QCheckBox* enabledCheck;
  QLineEdit* nameEdit;
  RangeEditor* symbolEdit;
  RangeEditor* subcarrierEdit;
  MyComboBox* modulationCombo;
  DoubleEdit* guardEdit;
  DoubleEdit* scalarEdit;
  MyComboBox* dataTypeCombo;
  IQLineEdit* iqEdit;
  QLabel* iqCountLabel;
  MyComboBox* bitTypeCombo;
  SymbolLineEdit* bitsEdit;
};

// SPDX-License-Identifier: MIT
// Form of one OFDM resource: where it sits in the grid and what it fills it with.
#include "wireless/ofdm/ofdm_resource_view.h"

#include "digital/symbol_line_edit.h"
#include "widgets/double_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "wireless/ofdm/iq_line_edit.h"
#include "wireless/ofdm/range_editor.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

namespace {

struct Item {
  int value;
  const char* text;
};

const Item modulationItems[] = {{0, "BPSK"},  {2, "QPSK"},   {6, "8PSK"},   {8, "16PSK"},
                                {9, "16QAM"}, {10, "QAM64"}, {11, "QAM256"}};
const Item dataTypeItems[] = {{OFDMDataBits, "Bits"}, {OFDMDataIq, "I/Q values"}};
const Item bitTypeItems[] = {{9, "PN9"}, {15, "PN15"}, {23, "PN23"}, {ofdmCustomBits, "Custom Bits"}};

template <size_t N>
void fill(MyComboBox* combo, const Item (&items)[N]) {
  for (const Item& item : items) combo->addItem(item.text, item.value);
}

}  // namespace

OFDMResourceView::OFDMResourceView(QWidget* parent)
    : QWidget(parent),
      enabledCheck(new QCheckBox(this)),
      nameEdit(new QLineEdit(this)),
      symbolEdit(new RangeEditor(this)),
      subcarrierEdit(new RangeEditor(this)),
      modulationCombo(new MyComboBox(this)),
      guardEdit(new DoubleEdit(0.0, 100.0, 2, 25.0, this)),
      scalarEdit(new DoubleEdit(0.0, 1.0, 6, 1.0, this)),
      dataTypeCombo(new MyComboBox(this)),
      iqEdit(new IQLineEdit(this)),
      iqCountLabel(new QLabel(this)),
      bitTypeCombo(new MyComboBox(this)),
      bitsEdit(new SymbolLineEdit(this)) {
  fill(modulationCombo, modulationItems);
  fill(dataTypeCombo, dataTypeItems);
  fill(bitTypeCombo, bitTypeItems);
  addRows();
  connectControls();
  setResource(nullptr);
}

void OFDMResourceView::addRows() {
  auto* form = new MyFormLayout(this);
  form->addRow("Enabled", enabledCheck);
  form->addRow("Name", nameEdit);
  form->addRow("Symbol Range", symbolEdit);
  form->addRow("Subcarrier Indices", subcarrierEdit);
  form->addRow("Modulation Type", modulationCombo);
  form->addRow("Guard Interval (%)", guardEdit);
  form->addRow("Scalar", scalarEdit);
  form->addRow("Data Type", dataTypeCombo);
  form->addRow("Custom I/Q", iqEdit);
  form->addRow(new QLabel(this), iqCountLabel);
  form->addRow("Bit Type", bitTypeCombo);
  form->addRow("Custom Bits", bitsEdit);
}

void OFDMResourceView::connectControls() {
  const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
  connect(enabledCheck, &QCheckBox::toggled, this, &OFDMResourceView::updateResource);
  connect(nameEdit, &QLineEdit::textChanged, this, [this](const QString& name) {
    updateResource();
    if (!filling) emit nameChanged(name);
  });
  connect(symbolEdit, &RangeEditor::rangeChanged, this, &OFDMResourceView::updateResource);
  connect(subcarrierEdit, &RangeEditor::rangeChanged, this, &OFDMResourceView::updateResource);
  connect(modulationCombo, indexChanged, this, &OFDMResourceView::updateResource);
  connect(guardEdit, &DoubleEdit::editUpdated, this, &OFDMResourceView::updateResource);
  connect(scalarEdit, &DoubleEdit::editUpdated, this, &OFDMResourceView::updateResource);
  connect(dataTypeCombo, indexChanged, this, &OFDMResourceView::updateResource);
  connect(iqEdit, &IQLineEdit::valuesChanged, this, &OFDMResourceView::updateResource);
  connect(bitTypeCombo, indexChanged, this, &OFDMResourceView::updateResource);
  connect(bitsEdit, &SymbolLineEdit::dataUpdated, this, &OFDMResourceView::updateResource);
}

void OFDMResourceView::setResource(OFDMResource* resource) {
  shown = resource;
  setEnabled(shown != nullptr);
  if (shown) showResource();
}

void OFDMResourceView::showResource() {
  filling = true;
  enabledCheck->setChecked(shown->enabled);
  nameEdit->setText(shown->name);
  symbolEdit->setRange(shown->symbolRange.text);
  subcarrierEdit->setRange(shown->subcarrierIndices.text);
  modulationCombo->selectValue(shown->modulation);
  // The form speaks in percent; the resource, like the grid, holds a fraction.
  guardEdit->setValue(shown->guardInterval * 100.0);
  scalarEdit->setValue(shown->scalar);
  dataTypeCombo->selectValue(shown->dataType);
  iqEdit->setValues(shown->userIq);
  bitTypeCombo->selectValue(shown->bitSelect);
  bitsEdit->setPattern(shown->userBits);
  filling = false;
  refreshRows();
}

void OFDMResourceView::updateResource() {
  if (filling || !shown) return;
  shown->enabled = enabledCheck->isChecked();
  shown->name = nameEdit->text();
  shown->symbolRange = {symbolEdit->text(), symbolEdit->values()};
  shown->subcarrierIndices = {subcarrierEdit->text(), subcarrierEdit->values()};
  shown->modulation = modulationCombo->currentValue();
  shown->guardInterval = guardEdit->value() / 100.0;
  shown->scalar = scalarEdit->value();
  shown->dataType = dataTypeCombo->currentValue();
  shown->userIq = iqEdit->values();
  shown->bitSelect = bitTypeCombo->currentValue();
  shown->userBits = bitsEdit->pattern();
  refreshRows();
}

// Only the rows of the chosen data type matter to the generator.
void OFDMResourceView::refreshRows() {
  iqCountLabel->setText(QString::asprintf("%d I/Q values", int(shown->userIq.size())));
  const bool iq = shown->dataType == OFDMDataIq;
  iqEdit->setEnabled(iq);
  modulationCombo->setEnabled(!iq);
  bitTypeCombo->setEnabled(!iq);
  bitsEdit->setEnabled(!iq && shown->bitSelect == ofdmCustomBits);
}

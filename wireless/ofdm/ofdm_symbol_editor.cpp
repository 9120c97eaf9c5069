// SPDX-License-Identifier: MIT
// The list of an OFDM configuration's resources beside the form of the selected one.
#include "wireless/ofdm/ofdm_symbol_editor.h"

#include "wireless/ofdm/ofdm_resource_view.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

OFDMSymbolEditor::OFDMSymbolEditor(std::vector<OFDMResource>& resources, QWidget* parent)
    : QWidget(parent),
      resources(resources),
      nameList(new QListWidget(this)),
      resourceView(new OFDMResourceView(this)) {
  auto* buttons = new QHBoxLayout();
  auto addButton = [&](const char* text, void (OFDMSymbolEditor::*slot)()) {
    auto* button = new QPushButton(text, this);
    buttons->addWidget(button);
    connect(button, &QPushButton::clicked, this, slot);
  };
  addButton("Add", &OFDMSymbolEditor::addPressed);
  addButton("Remove", &OFDMSymbolEditor::removePressed);
  addButton("Copy", &OFDMSymbolEditor::copyPressed);
  addButton("Done", &OFDMSymbolEditor::acceptPressed);
  auto* left = new QVBoxLayout();
  left->addWidget(nameList);
  left->addLayout(buttons);
  auto* row = new QHBoxLayout(this);
  row->addLayout(left);
  row->addWidget(resourceView);

  for (const OFDMResource& r : resources) nameList->addItem(r.name);
  connect(nameList, &QListWidget::currentRowChanged, this, &OFDMSymbolEditor::resourceIndexChanged);
  connect(resourceView, &OFDMResourceView::nameChanged, this,
          &OFDMSymbolEditor::currentNameChanged);
  select(resources.empty() ? -1 : 0);
}

void OFDMSymbolEditor::resourceIndexChanged(int row) {
  const bool inList = row >= 0 && row < static_cast<int>(resources.size());
  resourceView->setResource(inList ? &resources[row] : nullptr);
}

void OFDMSymbolEditor::currentNameChanged(QString newName) {
  if (QListWidgetItem* item = nameList->currentItem()) item->setText(newName);
}

void OFDMSymbolEditor::addPressed() { append(newOfdmResource(resources)); }

void OFDMSymbolEditor::copyPressed() {
  const int row = nameList->currentRow();
  if (row < 0 || row >= static_cast<int>(resources.size())) return;
  OFDMResource copy = resources[row];
  copy.index = newOfdmResource(resources).index;
  copy.name += " Copy";
  append(std::move(copy));
}

void OFDMSymbolEditor::removePressed() {
  const int row = nameList->currentRow();
  if (row < 0 || row >= static_cast<int>(resources.size())) return;
  resourceView->setResource(nullptr);
  resources.erase(resources.begin() + row);
  {
    const QSignalBlocker blocker(nameList);
    delete nameList->takeItem(row);
  }
  select(std::min(row, static_cast<int>(resources.size()) - 1));
}

void OFDMSymbolEditor::append(OFDMResource resource) {
  // The form points into the list, which may move as it grows.
  resourceView->setResource(nullptr);
  resources.push_back(std::move(resource));
  nameList->addItem(resources.back().name);
  select(static_cast<int>(resources.size()) - 1);
}

void OFDMSymbolEditor::select(int row) {
  {
    const QSignalBlocker blocker(nameList);
    nameList->setCurrentRow(row);
  }
  resourceIndexChanged(row);
}

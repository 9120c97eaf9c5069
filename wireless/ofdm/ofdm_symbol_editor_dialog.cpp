// SPDX-License-Identifier: MIT
// Dialog "OFDM Symbol Editor" around the resource editor of a configuration.
#include "wireless/ofdm/ofdm_symbol_editor_dialog.h"

#include "wireless/ofdm/ofdm_symbol_editor.h"

#include <QVBoxLayout>

OFDMSymbolEditorDialog::OFDMSymbolEditorDialog(std::vector<OFDMResource>& resources,
                                               QWidget* parent)
    : QDialog(parent), symbolEditor(new OFDMSymbolEditor(resources, this)) {
  setWindowTitle("OFDM Symbol Editor");
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(symbolEditor);
  connect(symbolEditor, &OFDMSymbolEditor::acceptPressed, this, &QDialog::accept);
}

// SPDX-License-Identifier: MIT
// Dialog "OFDM Symbol Editor" around the resource editor of a configuration.
#pragma once

#include "wireless/ofdm/ofdm_config.h"

#include <QDialog>

#include <vector>

class OFDMSymbolEditor;

// Edits the caller's list in place: there is nothing to take over on "Done".
class OFDMSymbolEditorDialog : public QDialog {
  Q_OBJECT

public:
  explicit OFDMSymbolEditorDialog(std::vector<OFDMResource>& resources, QWidget* parent = nullptr);

  OFDMSymbolEditor* editor() const { return symbolEditor; }

private:
  OFDMSymbolEditor* symbolEditor;
};

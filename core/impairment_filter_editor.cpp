// SPDX-License-Identifier: MIT
// The impairment panel's channel filter editor.
#include "core/impairment_widget.h"

#include "digital/channel_filter_editor_dialog.h"

bool runChannelFilterEditor(QWidget* parent, std::vector<Sample>& taps) {
  ChannelFilterEditorDialog dialog(taps, parent);
  if (dialog.exec() != QDialog::Accepted) return false;
  taps = dialog.taps();
  return true;
}

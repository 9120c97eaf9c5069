// SPDX-License-Identifier: MIT
// Multitone: generator and remote rows.
#include "core/central_widget.h"

void CentralWidget::addMultitoneView() {}

void CentralWidget::generateMultitone() {}
void CentralWidget::handleMultitoneRows(Scpi&, int) {}

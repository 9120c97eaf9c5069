// SPDX-License-Identifier: MIT
// Pulse: generator and remote rows.
#include "core/central_widget.h"

void CentralWidget::addPulseView() {}

void CentralWidget::generatePulse() {}
void CentralWidget::handlePulseRows(Scpi&, int) {}

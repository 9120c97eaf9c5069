// SPDX-License-Identifier: MIT
// Step sweep and ramp sweep: generators and remote rows.
#include "core/central_widget.h"

void CentralWidget::addSweepViews() {}

void CentralWidget::generateStepSweep() {}
void CentralWidget::generateRampSweep() {}
void CentralWidget::handleSweepRows(Scpi&, int) {}

// SPDX-License-Identifier: MIT
// AM and FM: generators and remote rows.
#include "core/central_widget.h"

void CentralWidget::addAmFmViews() {}

void CentralWidget::generateAM() {}
void CentralWidget::generateFM() {}
void CentralWidget::handleAmFmRows(Scpi&, int) {}

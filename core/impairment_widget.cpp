// SPDX-License-Identifier: MIT
// The "Signal Impairments" panel.
#include "core/impairment_widget.h"

#include <QSettings>

#include <cstring>

ImpairmentWidget::ImpairmentWidget(QWidget* parent) : QWidget(parent) {}

void ImpairmentWidget::process(const Sample* in, Sample* out, int count) {
  if (count > 0) std::memcpy(out, in, sizeof(Sample) * static_cast<size_t>(count));
}

void ImpairmentWidget::saveSettings(QSettings* settings) {
  settings->beginGroup("Impairments");
  settings->endGroup();
}

void ImpairmentWidget::loadSettings(QSettings* settings) {
  settings->beginGroup("Impairments");
  settings->endGroup();
}

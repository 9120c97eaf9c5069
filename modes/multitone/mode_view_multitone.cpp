// SPDX-License-Identifier: MIT
// Multitone view: phase law, seed, tone count, spacing and notch of the comb.
#include "modes/multitone/mode_view_multitone.h"

#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"

#include <QCheckBox>
#include <QSettings>

#include <algorithm>
#include <cmath>

namespace {

const char* const phaseTexts[3] = {"Fixed", "Random", "Parabolic"};

// The truncation of 4e7 / spacing, kept within int for a spacing that only a preset can hold.
int countWithinSpan(double spacingHz) {
  const double count = std::trunc(ModeViewMultitone::maxSpanHz / spacingHz);
  return count >= double(ModeViewMultitone::maxToneCount) ? ModeViewMultitone::maxToneCount
                                                          : static_cast<int>(std::max(count, 0.0));
}

}  // namespace

ModeViewMultitone::ModeViewMultitone(QWidget* parent)
    : ModeWidget("Multitone", 4, parent),
      phaseCombo(new MyComboBox(this)),
      seedEdit(new IntLineEdit(this)),
      toneCountEdit(new IntLineEdit(this)),
      spacingEdit(new FrequencyEdit(1000.0, this)),
      notchEdit(new FrequencyEdit(0.0, this)) {
  for (int value = 0; value < 3; ++value) phaseCombo->addItem(phaseTexts[value], value);
  phaseCombo->setCurrentIndex(0);
  seedEdit->setRange(1, 1000000000);
  seedEdit->setValue(23);
  seedEdit->setEnabled(false);
  toneCountEdit->setRange(1, maxToneCount);

  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Tone Phase", phaseCombo);
  formLayout->addRow("Seed", seedEdit);
  formLayout->addRow("Tone Count", toneCountEdit);
  formLayout->addRow("Freq Spacing", spacingEdit);
  formLayout->addRow("Notch Width", notchEdit);

  connect(phaseCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
          &ModeViewMultitone::setPhasePrivate);
  connect(seedEdit, &IntLineEdit::valueChanged, this, &ModeViewMultitone::setPhaseSeed);
  connect(toneCountEdit, &IntLineEdit::valueChanged, this, &ModeViewMultitone::setToneCount);
  connect(spacingEdit, &FrequencyEdit::valueChanged, this, &ModeViewMultitone::setFreqSpacing);
  connect(notchEdit, &FrequencyEdit::valueChanged, this, &ModeViewMultitone::setNotchWidth);
}

int ModeViewMultitone::phaseSeed() const { return seedEdit->value(); }
int ModeViewMultitone::toneCount() const { return toneCountEdit->value(); }
double ModeViewMultitone::freqSpacing() const { return spacingEdit->value(); }
double ModeViewMultitone::notchWidth() const { return notchEdit->value(); }

MultitoneSettings ModeViewMultitone::settings() const {
  MultitoneSettings s;
  s.toneCount = toneCount();
  s.spacingHz = freqSpacing();
  s.notchWidthHz = notchWidth();
  s.phase = phase();
  s.seed = phaseSeed();
  return s;
}

void ModeViewMultitone::setPhase(MultiTonePhase newPhase) {
  seedEdit->setEnabled(newPhase == MultiTonePhaseRandom);
  phaseCombo->selectValue(newPhase);  // another item also runs setPhasePrivate
  emit updated();
}

void ModeViewMultitone::setPhasePrivate(int index) {
  seedEdit->setEnabled(index == MultiTonePhaseRandom);
  emit updated();
}

void ModeViewMultitone::setFreqSpacing(double newSpacing) {
  double spacing = std::clamp(newSpacing, minSpacingHz, maxSpacingHz);
  const int count = toneCount();
  if (count * spacing > maxSpanHz) spacing = maxSpanHz / count;
  spacingEdit->setValue(spacing);
  emit updated();
}

void ModeViewMultitone::setToneCount(int newCount) {
  int count = std::clamp(newCount, 1, maxToneCount);
  const double spacing = freqSpacing();
  if (count * spacing > maxSpanHz) count = countWithinSpan(spacing);
  toneCountEdit->setValue(count);
  emit updated();
}

void ModeViewMultitone::setPhaseSeed(int newSeed) {
  seedEdit->setValue(newSeed);
  emit updated();
}

void ModeViewMultitone::setNotchWidth(double newWidth) {
  notchEdit->setValue(std::clamp(newWidth, 0.0, maxSpanHz));
  emit updated();
}

void ModeViewMultitone::setDefaults() {
  setToneCount(3.0 * freqSpacing() > maxSpanHz ? countWithinSpan(freqSpacing()) : 3);
  setFreqSpacing(toneCount() * 1e6 > maxSpanHz ? maxSpanHz / toneCount() : 1e6);
  seedEdit->setEnabled(false);
  setPhase(MultiTonePhaseParabolic);
  setPhaseSeed(23);
  setNotchWidth(0.0);
}

void ModeViewMultitone::saveSettings(QSettings* settings) {
  settings->beginGroup("Mtone");
  settings->setValue("Phase", static_cast<int>(phase()));
  settings->setValue("Ntones", toneCount());
  settings->setValue("Fspacing", freqSpacing());
  settings->setValue("RandomPhaseSeed", phaseSeed());
  settings->setValue("NotchWidth", notchWidth());
  settings->endGroup();
}

// Values are taken as they stand, without the clamps and the product rule of the slots.
void ModeViewMultitone::loadSettings(QSettings* settings) {
  settings->beginGroup("Mtone");
  const int phaseLaw = settings->value("Phase", static_cast<int>(phase())).toInt();
  seedEdit->setEnabled(phaseLaw == MultiTonePhaseRandom);
  phaseCombo->selectValue(phaseLaw);
  emit updated();
  toneCountEdit->setValue(settings->value("Ntones", toneCount()).toInt());
  emit updated();
  spacingEdit->setValue(settings->value("Fspacing", freqSpacing()).toDouble());
  emit updated();
  seedEdit->setValue(settings->value("RandomPhaseSeed", phaseSeed()).toInt());
  emit updated();
  notchEdit->setValue(settings->value("NotchWidth", notchWidth()).toDouble());
  emit updated();
  settings->endGroup();
}

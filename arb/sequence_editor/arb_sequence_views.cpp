// SPDX-License-Identifier: MIT
// The editor's pages, one for each kind of sequence entry; each field writes into its entry.
#include "arb/sequence_editor/arb_sequence_views.h"

#include "arb/arb_sequence.h"
#include "arb/arb_view_support.h"
#include "arb/iq_file_loading.h"
#include "shell/file_dialogs.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/unit_format.h"

#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

// The arb mode's file kinds, without sequences.
const LoadRow loadRows[] = {
    {KindCsv, "I/Q CSV", "CSV I/Q File (*.csv *.txt)", "CSV I/Q File"},
    {KindBinary16, "I/Q binary (16-bit int complex)", "Binary (*.bin *.dat *.iq *.raw)",
     "Binary 16-bit complex int I/Q File"},
    {KindBinary32, "I/Q binary (32-bit float complex)", "Binary (*.bin *.dat *.iq *.raw)",
     "Binary 32-bit complex float I/Q File"},
    {KindMidasBlue, "Midas Blue", "Blue Files (*.tmp *.prm)", "Blue Files"},
    {KindWav, "WAV file", "WAV Files (*.wav)", "WAV File"},
};

}  // namespace

ArbSequenceView::ArbSequenceView(ArbSequenceEntry* entry, QWidget* parent)
    : QWidget(parent), item(entry), form(new MyFormLayout(this)) {
  auto* name = new QLineEdit(entry->name, this);
  form->addRow("Name", name);
  connect(name, &QLineEdit::textEdited, this, &ArbSequenceView::nameEdited);
}

void ArbSequenceView::nameEdited(const QString& name) {
  item->name = name;
  emit updated();
  emit updateNameList(this);
}

// ---- I/Q data ----

ArbSequenceIQView::ArbSequenceIQView(ArbSequenceEntry* entry, QWidget* parent)
    : ArbSequenceView(entry, parent),
      repetitionsEdit(new IntLineEdit(this)),
      loadCombo(new MyComboBox(this)),
      fileNameLabel(new QLabel(this)),
      fileSamplesLabel(new QLabel(this)) {
  repetitionsEdit->setRange(1, INT_MAX);
  repetitionsEdit->setValue(entry->repetitions);
  loadCombo->addItem("", 0);
  for (const LoadRow& row : loadRows) loadCombo->addItem(row.text, row.value);
  form->addRow("Repetitions", repetitionsEdit);
  form->addRow("Load", loadCombo);
  form->addRow("File Name", fileNameLabel);
  form->addRow("Samples In File", fileSamplesLabel);
  connect(repetitionsEdit, &IntLineEdit::valueChanged, this, &ArbSequenceIQView::setRepetitions);
  connect(loadCombo, QOverload<int>::of(&QComboBox::activated), this,
          &ArbSequenceIQView::loadWaveformPressed);
  refreshLabels();
}

void ArbSequenceIQView::setRepetitions(int count) {
  item->repetitions = std::max(count, 1);
  repetitionsEdit->setValue(item->repetitions);
  emit updated();
}

void ArbSequenceIQView::loadWaveformPressed(int row) {
  const int kind = loadCombo->itemData(row).toInt();
  loadCombo->setCurrentIndex(0);
  const LoadRow* load = findLoadRow(loadRows, kind);
  if (!load) return;
  const QString path = openFileName(load->title, load->filter, this);
  if (!path.isEmpty()) loadFile(kind, path);
}

void ArbSequenceIQView::loadFile(int kind, const QString& path) {
  if (!readWholeFile(kind, path, ArbSequence::maxTotalSamples, item->samples)) return;
  item->fileName = QFileInfo(path).fileName();
  refreshLabels();
  emit updated();
}

void ArbSequenceIQView::refreshLabels() {
  fileNameLabel->setText(item->fileName);
  fileSamplesLabel->setText(QString("%L1").arg(static_cast<qlonglong>(item->samples.size())));
}

// ---- Constant ----

ArbSequenceConstantView::ArbSequenceConstantView(ArbSequenceEntry* entry, QWidget* parent)
    : ArbSequenceView(entry, parent),
      iEdit(new DoubleEdit(-1.0, 1.0, 3, entry->constant.real(), this)),
      qEdit(new DoubleEdit(-1.0, 1.0, 3, entry->constant.imag(), this)),
      countEdit(new IntLineEdit(this)) {
  countEdit->setRange(1, maxSampleCount);
  countEdit->setValue(entry->constantLength);  // a 0 from a file stays until edited
  form->addRow("I Val", iEdit);
  form->addRow("Q Val", qEdit);
  form->addRow("Sample Count", countEdit);
  connect(iEdit, &DoubleEdit::editUpdated, this, &ArbSequenceConstantView::setI);
  connect(qEdit, &DoubleEdit::editUpdated, this, &ArbSequenceConstantView::setQ);
  connect(countEdit, &IntLineEdit::valueChanged, this, &ArbSequenceConstantView::setSampleCount);
}

namespace {

float unitValue(double value, float current) {
  return std::isnan(value) ? current : static_cast<float>(std::clamp(value, -1.0, 1.0));
}

}  // namespace

void ArbSequenceConstantView::setI(double value) {
  item->constant.real(unitValue(value, item->constant.real()));
  iEdit->setValue(item->constant.real());
  emit updated();
}

void ArbSequenceConstantView::setQ(double value) {
  item->constant.imag(unitValue(value, item->constant.imag()));
  qEdit->setValue(item->constant.imag());
  emit updated();
}

void ArbSequenceConstantView::setSampleCount(int count) {
  item->constantLength = std::clamp(count, 1, maxSampleCount);
  countEdit->setValue(item->constantLength);
  emit updated();
}

// ---- Frequency change ----

ArbSequenceFreqChangeView::ArbSequenceFreqChangeView(ArbSequenceEntry* entry, QWidget* parent)
    : ArbSequenceView(entry, parent), frequencyEdit(new FrequencyEdit(entry->frequency, this)) {
  form->addRow("Frequency", frequencyEdit);
  form->addRow("Switch Time", new QLabel(formatTime(ArbSequence::switchTime), this));
  connect(frequencyEdit, &FrequencyEdit::valueChanged, this,
          &ArbSequenceFreqChangeView::setFrequency);
}

void ArbSequenceFreqChangeView::setFrequency(double hz) {
  if (!std::isnan(hz)) item->frequency = std::clamp(hz, minFrequency, maxFrequency);
  frequencyEdit->setValue(item->frequency);
  emit updated();
}

ArbSequenceView* makeSequenceView(ArbSequenceEntry* entry, QWidget* parent) {
  switch (entry->type) {
    case ArbSequenceEntry::Constant: return new ArbSequenceConstantView(entry, parent);
    case ArbSequenceEntry::FreqChange: return new ArbSequenceFreqChangeView(entry, parent);
    default: return new ArbSequenceIQView(entry, parent);
  }
}

// SPDX-License-Identifier: MIT
// The streaming view (mode 19): an ordered list of files played block by block without end.
#include "arb/streaming/mode_view_streaming.h"

#include "arb/arb_view_support.h"
#include "arb/iq_file_loading.h"
#include "arb/sigmf_reader.h"
#include "shell/error_queue.h"
#include "shell/file_dialogs.h"
#include "shell/message_box.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/unit_format.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

// The binary filter has no dots, as the instrument always showed it. SigMF (9) goes beyond the
// instrument's list: it is how most SDR tools exchange I/Q today.
const LoadRow loadRows[] = {
    {2, "I/Q binary (16-bit int complex)", "Binary (*bin *dat *iq *raw)",
     "Binary 16-bit complex int I/Q File"},
    {3, "I/Q binary (32-bit float complex)", "Binary (*bin *dat *iq *raw)",
     "Binary 32-bit complex float I/Q File"},
    {7, "WAV", "WAV Files (*.wav)", "WAV File"},
    {9, "SigMF", "SigMF Recording (*.sigmf-meta *.sigmf-data)", "SigMF Recording"},
};

}  // namespace

ModeViewStreaming::ModeViewStreaming(QWidget* parent)
    : ModeWidget("Streaming", 19, parent),
      sampleRateEdit(new FrequencyEdit(5e7, this)),
      iqScaleEdit(new DoubleEdit(this)),
      loadCombo(new MyComboBox(this)),
      fileList(new QListWidget(this)),
      totalFilesLabel(new QLabel(this)),
      totalSamplesLabel(new QLabel(this)),
      totalDurationLabel(new QLabel(this)),
      positionLabel(new QLabel("--", this)) {
  iqScaleEdit->setValue(100.0);
  loadCombo->addItem("", 0);
  for (const LoadRow& row : loadRows) loadCombo->addItem(row.text, row.value);
  fileList->setSelectionMode(QAbstractItemView::SingleSelection);
  fileList->setDragDropMode(QAbstractItemView::InternalMove);
  addControls();
  listChanged();
}

void ModeViewStreaming::addControls() {
  auto* unload = new QPushButton("Unload Files", this);
  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Sample Rate", sampleRateEdit);
  formLayout->addRow("I/Q Scale (%)", iqScaleEdit);
  formLayout->addRow("Load Files", loadCombo);
  formLayout->addRow("", unload);
  formLayout->addRow("File List", fileList);
  formLayout->addRow("Total Files", totalFilesLabel);
  formLayout->addRow("Total Samples", totalSamplesLabel);
  formLayout->addRow("Total Duration", totalDurationLabel);
  formLayout->addRow("Playback Pos", positionLabel);
  connect(sampleRateEdit, &FrequencyEdit::valueChanged, this, &ModeViewStreaming::setSampleRate);
  connect(iqScaleEdit, &DoubleEdit::editUpdated, this, &ModeViewStreaming::setIQScale);
  connect(loadCombo, QOverload<int>::of(&QComboBox::activated), this,
          &ModeViewStreaming::loadWaveformPressed);
  connect(unload, &QPushButton::clicked, this, &ModeViewStreaming::unloadWaveformPressed);
  connect(fileList->model(), &QAbstractItemModel::rowsMoved, this,
          &ModeViewStreaming::sequenceChanged);
}

bool ModeViewStreaming::hasFiles() const { return !getFileList().empty(); }

std::vector<StreamFileEntry> ModeViewStreaming::getFileList() const {
  const std::lock_guard<std::mutex> hold(lock);
  return ordered;
}

double ModeViewStreaming::sampleRate() const { return sampleRateEdit->value(); }
double ModeViewStreaming::iqScale() const { return iqScaleEdit->value(); }

void ModeViewStreaming::setSampleRate(double rate) {
  sampleRateEdit->setValue(clampLogged(rate, minSampleRate, maxSampleRate, sampleRate(),
                                       "Streaming sample rate clamped"));
  listChanged();
  emit updated();
}

void ModeViewStreaming::setIQScale(double percent) {
  iqScaleEdit->setValue(
      clampLogged(percent, minIQScale, maxIQScale, iqScale(), "Streaming I/Q scale clamped"));
  emit updated();
}

void ModeViewStreaming::loadWaveformPressed(int row) {
  const int value = loadCombo->itemData(row).toInt();
  loadCombo->setCurrentIndex(0);
  const LoadRow* load = findLoadRow(loadRows, value);
  if (!load) return;
  addFiles(value, openFileNames(load->title, load->filter, this));
  emit updated();
}

void ModeViewStreaming::addFiles(int fileType, const QStringList& paths) {
  for (const QString& path : paths) {
    const std::unique_ptr<IQFileReader> reader = streamReaderFor(fileType);
    if (!reader || !reader->open(path)) {
      showWarning(this, "Error Encountered", "Unable to open " + path + ". Skipping.");
      continue;
    }
    // A recording's own rate becomes the mode's, the first file's when there are several.
    const auto* sigmf = dynamic_cast<const SigMFReader*>(reader.get());
    if (sigmf && entries.empty() && sigmf->sampleRate() > 0.0) setSampleRate(sigmf->sampleRate());
    const StreamFileEntry entry{nextId++, path, fileType, reader->sampleCount()};
    entries.push_back(entry);
    auto* item = new QListWidgetItem(
        QFileInfo(path).fileName() + " -- " + formatCount(entry.sampleCount), fileList);
    item->setData(Qt::UserRole, entry.id);
  }
  listChanged();
}

void ModeViewStreaming::unloadWaveformPressed() {
  entries.clear();
  fileList->clear();
  listChanged();
  emit updated();
}

void ModeViewStreaming::sequenceChanged() {
  listChanged();
  emit updated();
}

void ModeViewStreaming::setStreamingPos(double percent) {
  positionLabel->setText(QString::asprintf("%.2f %%", percent));
}

void ModeViewStreaming::stoppedStreaming() { positionLabel->setText("--"); }

void ModeViewStreaming::listChanged() {
  std::vector<StreamFileEntry> order;
  for (int row = 0; row < fileList->count(); ++row) {
    const int id = fileList->item(row)->data(Qt::UserRole).toInt();
    const auto entry = std::find_if(entries.begin(), entries.end(),
                                    [id](const StreamFileEntry& e) { return e.id == id; });
    if (entry != entries.end()) order.push_back(*entry);
  }
  int64_t total = 0;
  for (const StreamFileEntry& e : order) total += e.sampleCount;
  const int files = static_cast<int>(order.size());
  totalFilesLabel->setText(files == 1 ? QString("1 file loaded")
                                      : QString("%1 files loaded").arg(files));
  totalSamplesLabel->setText(QString("%L1").arg(total));
  totalDurationLabel->setText(formatDuration(total / sampleRate()));
  const std::lock_guard<std::mutex> hold(lock);
  ordered = std::move(order);
}

void ModeViewStreaming::setDefaults() {
  setSampleRate(5e7);
  setIQScale(100.0);
  unloadWaveformPressed();
}

void ModeViewStreaming::saveSettings(QSettings* settings) {
  settings->beginGroup("Streaming");
  settings->setValue("SampleRate", sampleRate());
  settings->setValue("IQScale", iqScale());
  settings->endGroup();
}

void ModeViewStreaming::loadSettings(QSettings* settings) {
  settings->beginGroup("Streaming");
  setSampleRate(settings->value("SampleRate", sampleRate()).toDouble());
  setIQScale(settings->value("IQScale", iqScale()).toDouble());
  settings->endGroup();
}

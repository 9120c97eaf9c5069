// SPDX-License-Identifier: MIT
// The dialog that builds a sequence and saves it to a ".seq" file for the arb mode.
#include "arb/sequence_editor/arb_sequence_editor.h"

#include "arb/arb_view_support.h"
#include "arb/sequence_editor/arb_sequence_views.h"
#include "shell/file_dialogs.h"
#include "shell/message_box.h"

#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>

namespace {

constexpr const char* fileFilter = "Arb Sequence (*.seq)";
constexpr const char* fileTitle = "Custom Sequence File";

}  // namespace

ArbSequenceEditor::ArbSequenceEditor(QWidget* parent)
    : QDialog(parent),
      list(new QListWidget(this)),
      stack(new QStackedWidget(this)),
      sampleCountLabel(new QLabel(this)) {
  setWindowTitle("Arb Sequence Editor");
  list->setDragDropMode(QAbstractItemView::InternalMove);
  list->setSelectionMode(QAbstractItemView::SingleSelection);
  addControls();
  changesOccurred();
  changed = false;
}

void ArbSequenceEditor::addControls() {
  auto* grid = new QGridLayout(this);
  const std::pair<const char*, void (ArbSequenceEditor::*)()> buttons[] = {
      {"Insert Arb", &ArbSequenceEditor::addSequenceArb},
      {"Insert Constant", &ArbSequenceEditor::addSequenceConstant},
      {"Insert Freq", &ArbSequenceEditor::addSequenceFreqChange},
      {"Clear Selected", &ArbSequenceEditor::clearSelectedPressed},
      {"Clear All", &ArbSequenceEditor::clearAllPressed},
      {"Load Sequence", &ArbSequenceEditor::loadSequence},
      {"Save Sequence", &ArbSequenceEditor::saveSequence},
  };
  auto* column = new QVBoxLayout;
  for (const auto& [text, slot] : buttons) {
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false);  // Return in a field must not press a button
    connect(button, &QPushButton::clicked, this, slot);
    column->addWidget(button);
  }
  column->addStretch();
  grid->addLayout(column, 0, 0);
  grid->addWidget(list, 0, 1);
  grid->addWidget(stack, 0, 2);
  grid->addWidget(sampleCountLabel, 1, 0, 1, 3);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(2, 2);
  connect(list, &QListWidget::currentRowChanged, this, &ArbSequenceEditor::sequenceIndexChanged);
  // A row dragged elsewhere changes the order that is saved.
  connect(list->model(), &QAbstractItemModel::rowsMoved, this, &ArbSequenceEditor::changesOccurred);
  resize(760, 420);
}

std::vector<int> ArbSequenceEditor::listOrder() const {
  std::vector<int> ids;
  for (int row = 0; row < list->count(); ++row)
    ids.push_back(list->item(row)->data(Qt::UserRole).toInt());
  return ids;
}

// ---- Entries ----

void ArbSequenceEditor::addSequenceArb() { addEntry(ArbSequenceEntry::IQData); }
void ArbSequenceEditor::addSequenceConstant() { addEntry(ArbSequenceEntry::Constant); }
void ArbSequenceEditor::addSequenceFreqChange() { addEntry(ArbSequenceEntry::FreqChange); }

void ArbSequenceEditor::addEntry(int type) {
  showEntry(seq.add(type));
  list->setCurrentRow(list->count() - 1);
  changesOccurred();
}

void ArbSequenceEditor::showEntry(ArbSequenceEntry* entry) {
  ArbSequenceView* view = makeSequenceView(entry, stack);
  views[entry->id] = view;
  stack->addWidget(view);
  auto* row = new QListWidgetItem(entry->name, list);
  row->setData(Qt::UserRole, entry->id);
  row->setFlags(row->flags() & ~Qt::ItemIsDropEnabled);  // rows move between rows, not into them
  connect(view, &ArbSequenceView::updated, this, &ArbSequenceEditor::sequenceDataChanged);
  connect(view, &ArbSequenceView::updateNameList, this, &ArbSequenceEditor::updateNameList);
}

void ArbSequenceEditor::clearSelectedPressed() {
  const QList<QListWidgetItem*> selected = list->selectedItems();
  if (selected.size() != 1) return;
  const int id = selected.front()->data(Qt::UserRole).toInt();
  delete selected.front();
  const auto view = views.find(id);
  if (view != views.end()) {
    delete view->second;
    views.erase(view);
  }
  seq.remove(id);
  changesOccurred();
}

void ArbSequenceEditor::clearAllPressed() {
  list->clear();
  for (auto& [id, view] : views) delete view;
  views.clear();
  seq.clear();
  changesOccurred();
}

void ArbSequenceEditor::sequenceIndexChanged(int row) {
  if (row < 0 || row >= list->count()) return;
  const auto view = views.find(list->item(row)->data(Qt::UserRole).toInt());
  if (view != views.end()) stack->setCurrentWidget(view->second);
}

void ArbSequenceEditor::updateNameList(ArbSequenceView* view) {
  for (int row = 0; row < list->count(); ++row)
    if (list->item(row)->data(Qt::UserRole).toInt() == view->entry()->id)
      list->item(row)->setText(view->entry()->name);
}

void ArbSequenceEditor::sequenceDataChanged() {
  changesOccurred();
  emit updated();
}

void ArbSequenceEditor::changesOccurred() {
  changed = true;
  sampleCountLabel->setText(
      QString("Samples in sequence: %L1").arg(static_cast<qlonglong>(seq.totalSamples())));
}

// ---- Files ----

void ArbSequenceEditor::loadSequence() {
  const QString path = openFileName(fileTitle, fileFilter, this);
  if (!path.isEmpty()) loadSequenceFrom(path);
}

bool ArbSequenceEditor::loadSequenceFrom(const QString& path) {
  clearAllPressed();
  const bool read = loadSequenceFile(seq, path, this);
  for (const auto& entry : seq.entries()) showEntry(entry.get());
  if (list->count() > 0) list->setCurrentRow(0);
  changesOccurred();
  changed = !read;
  return read;
}

bool ArbSequenceEditor::saveable() {
  if (seq.totalSamples() > ArbSequence::maxTotalSamples) {
    showWarning(this, "Invalid Sequence Size", "Total sequence size too large.");
    return false;
  }
  if (seq.freqChangeCount() == 1) {
    showWarning(this, "Invalid Sequence",
                "Invalid number of frequency changes. Cannot be exactly 1 frequency change.");
    return false;
  }
  return true;
}

void ArbSequenceEditor::saveSequence() {
  if (!saveable()) return;
  const QString path = saveFileName(fileTitle, fileFilter, this);
  if (!path.isEmpty()) writeSequence(path);
}

bool ArbSequenceEditor::saveSequenceTo(const QString& path) {
  return saveable() && writeSequence(path);
}

// A failed write is not reported: the changes simply stay pending.
bool ArbSequenceEditor::writeSequence(const QString& path) {
  if (!seq.save(path, listOrder())) return false;
  changed = false;
  return true;
}

void ArbSequenceEditor::reject() {
  if (changed && QMessageBox::question(this, "Pending Changes",
                                       "There are unsaved changes, would you still like to close?",
                                       QMessageBox::Yes | QMessageBox::No) != QMessageBox::Yes)
    return;
  QDialog::reject();
}

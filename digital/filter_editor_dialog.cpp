// SPDX-License-Identifier: MIT
// The frame the two filter editors share: table, buttons, plots, file and accept slots.
#include "digital/filter_editor_dialog.h"

#include "digital/basic_table_widget.h"
#include "digital/filter_editor_support.h"
#include "shell/file_dialogs.h"
#include "widgets/am_plot.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QVBoxLayout>

using namespace filter_editor;

FilterEditorDialog::FilterEditorDialog(const QStringList& columns, QWidget* parent)
    : QDialog(parent),
      table(new BasicTableWidget(0, columns.size(), this)),
      impulsePlot(new AMPlot(this)),
      spectrumPlot(new AMPlot(this)) {
  setWindowTitle("Custom Filter");
  table->setHorizontalHeaderLabels(columns);
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  impulsePlot->setTitle("Impulse");
  impulsePlot->setXLabel("Samples");
  spectrumPlot->setTitle("Spectrum");
  spectrumPlot->setXLabel("Freq");
}

void FilterEditorDialog::layOut(const std::vector<Action>& actions, QWidget* note) {
  auto* buttons = new QGridLayout();
  for (size_t index = 0; index < actions.size(); ++index) {
    auto* button = new QPushButton(actions[index].text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, actions[index].run);
    buttons->addWidget(button, static_cast<int>(index / 2), static_cast<int>(index % 2));
  }
  auto* left = new QVBoxLayout();
  left->addWidget(table);
  if (note) left->addWidget(note);
  left->addLayout(buttons);
  auto* right = new QVBoxLayout();
  right->addWidget(impulsePlot);
  right->addWidget(spectrumPlot);
  auto* layout = new QHBoxLayout(this);
  layout->addLayout(left, 1);
  layout->addLayout(right, 2);
  resize(900, 600);
}

void FilterEditorDialog::loadFilter() {
  const QString path = openFileName(loadCaption, fileFilter, this);
  if (!path.isEmpty() && !loadFilterFile(path)) warnLoadFailed(this);
}

void FilterEditorDialog::saveFilter() {
  const QString path = saveFileName(saveCaption, fileFilter, this);
  if (!path.isEmpty() && !saveFilterFile(path)) warnSaveFailed(this);
}

void FilterEditorDialog::finalCheck() {
  if (checkTapCount(this, tapCount())) accept();
}

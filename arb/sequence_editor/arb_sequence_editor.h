// SPDX-License-Identifier: MIT
// The dialog that builds a sequence and saves it to a ".seq" file for the arb mode.
#pragma once

#include "arb/arb_sequence.h"

#include <QDialog>

#include <map>

class ArbSequenceView;
class QLabel;
class QListWidget;
class QStackedWidget;

// A list of the entries (drag to reorder: the list's order is the order saved), and the page
// of the selected one. The sequence reaches the mode only by way of a file.
class ArbSequenceEditor : public QDialog {
  Q_OBJECT

public:
  explicit ArbSequenceEditor(QWidget* parent = nullptr);

  const ArbSequence& sequence() const { return seq; }
  // The entry ids in the list's order.
  std::vector<int> listOrder() const;
  bool hasPendingChanges() const { return changed; }
  // The dialogs' work, by path: loading replaces everything; saving applies the size and hop
  // rules with their boxes first. True when the file was read or written.
  bool loadSequenceFrom(const QString& path);
  bool saveSequenceTo(const QString& path);
  // Closing asks first while changes are pending.
  void reject() override;

signals:
  void updated();

public slots:
  void addSequenceArb();
  void addSequenceConstant();
  void addSequenceFreqChange();
  void clearSelectedPressed();
  void clearAllPressed();
  void loadSequence();
  void saveSequence();
  void sequenceIndexChanged(int row);
  void updateNameList(ArbSequenceView* view);
  void sequenceDataChanged();
  void changesOccurred();

private:
  void addControls();
  void addEntry(int type);
  // A page and a list row for an entry of the sequence.
  void showEntry(ArbSequenceEntry* entry);
  // False, with its box, when the sequence breaks a rule of saving.
  bool saveable();
  // Writes the file in the list's order; true when it was written.
  bool writeSequence(const QString& path);

  ArbSequence seq;
  bool changed = false;
  std::map<int, ArbSequenceView*> views;  // by entry id
  QListWidget* list;
  QStackedWidget* stack;
  QLabel* sampleCountLabel;
};

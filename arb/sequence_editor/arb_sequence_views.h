// SPDX-License-Identifier: MIT
// The editor's pages, one for each kind of sequence entry; each field writes into its entry.
#pragma once

#include <QWidget>

class ArbSequenceEntry;
class DoubleEdit;
class FrequencyEdit;
class IntLineEdit;
class MyComboBox;
class MyFormLayout;
class QLabel;
class QLineEdit;

class ArbSequenceView : public QWidget {
  Q_OBJECT

public:
  ArbSequenceEntry* entry() const { return item; }

signals:
  void updated();
  void updateNameList(ArbSequenceView* view);

protected:
  ArbSequenceView(ArbSequenceEntry* entry, QWidget* parent);

  ArbSequenceEntry* item;
  MyFormLayout* form;

private:
  void nameEdited(const QString& name);
};

class ArbSequenceIQView : public ArbSequenceView {
  Q_OBJECT

public:
  ArbSequenceIQView(ArbSequenceEntry* entry, QWidget* parent = nullptr);

  // Reads the whole file of a "Load" row's kind into the entry; a file that doesn't open
  // changes nothing and says nothing.
  void loadFile(int kind, const QString& path);

public slots:
  void loadWaveformPressed(int row);
  void setRepetitions(int count);

private:
  void refreshLabels();

  IntLineEdit* repetitionsEdit;
  MyComboBox* loadCombo;
  QLabel* fileNameLabel;
  QLabel* fileSamplesLabel;
};

class ArbSequenceConstantView : public ArbSequenceView {
  Q_OBJECT

public:
  static constexpr int maxSampleCount = 1000000000;

  ArbSequenceConstantView(ArbSequenceEntry* entry, QWidget* parent = nullptr);

public slots:
  void setI(double value);
  void setQ(double value);
  void setSampleCount(int count);

private:
  DoubleEdit* iEdit;
  DoubleEdit* qEdit;
  IntLineEdit* countEdit;
};

class ArbSequenceFreqChangeView : public ArbSequenceView {
  Q_OBJECT

public:
  static constexpr double minFrequency = 30e6;
  static constexpr double maxFrequency = 6e9;

  ArbSequenceFreqChangeView(ArbSequenceEntry* entry, QWidget* parent = nullptr);

public slots:
  void setFrequency(double hz);

private:
  FrequencyEdit* frequencyEdit;
};

// The page of an entry's kind.
ArbSequenceView* makeSequenceView(ArbSequenceEntry* entry, QWidget* parent = nullptr);

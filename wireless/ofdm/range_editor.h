// SPDX-License-Identifier: MIT
// Line edit of an integer range such as "-26:-22,1:6", white when it parses and red when not.
#pragma once

#include <QLineEdit>

#include <vector>

class RangeEditor : public QLineEdit {
  Q_OBJECT

public:
  explicit RangeEditor(QWidget* parent = nullptr);

  // The sorted integers of the last parse; after an invalid text, those before the bad part.
  const std::vector<int>& values() const { return values_; }
  bool valid() const { return valid_; }
  // Shows `text` with its colour and values; no signal.
  void setRange(const QString& text);

signals:
  void rangeChanged();

public slots:
  void editChanged();

private:
  void parse();

  std::vector<int> values_;
  bool valid_ = true;
};

// White for a text that parses, red for one that doesn't; shared by the OFDM edits.
void colourValidity(QLineEdit* edit, bool valid);

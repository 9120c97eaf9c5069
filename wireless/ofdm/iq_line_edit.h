// SPDX-License-Identifier: MIT
// Line edit of a list of I/Q values typed as "I, Q, I, Q", coloured as a range edit is.
#pragma once

#include "dsp/sample.h"

#include <QLineEdit>

#include <vector>

class IQLineEdit : public QLineEdit {
  Q_OBJECT

public:
  explicit IQLineEdit(QWidget* parent = nullptr);

  // The pairs of the last parse; after an invalid text, the whole pairs before the bad part.
  const std::vector<Sample>& values() const { return values_; }
  bool valid() const { return valid_; }
  // Shows the values as text, white; no signal.
  void setValues(const std::vector<Sample>& values);

signals:
  void valuesChanged();

public slots:
  void editChanged();

private:
  std::vector<Sample> values_;
  bool valid_ = true;
};

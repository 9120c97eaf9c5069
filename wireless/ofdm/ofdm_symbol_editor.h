// SPDX-License-Identifier: MIT
// The list of an OFDM configuration's resources beside the form of the selected one.
#pragma once

#include "wireless/ofdm/ofdm_config.h"

#include <QString>
#include <QWidget>

#include <vector>

class OFDMResourceView;
class QListWidget;

// Works directly on the caller's list, which must outlive the editor.
class OFDMSymbolEditor : public QWidget {
  Q_OBJECT

public:
  explicit OFDMSymbolEditor(std::vector<OFDMResource>& resources, QWidget* parent = nullptr);

  QListWidget* list() const { return nameList; }
  OFDMResourceView* view() const { return resourceView; }

signals:
  void acceptPressed();

public slots:
  void resourceIndexChanged(int row);
  void currentNameChanged(QString newName);
  void addPressed();
  void removePressed();
  void copyPressed();

private:
  // Appends `resource`, lists it and selects it.
  void append(OFDMResource resource);
  void select(int row);

  std::vector<OFDMResource>& resources;
  QListWidget* nameList;
  OFDMResourceView* resourceView;
};

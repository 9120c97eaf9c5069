// SPDX-License-Identifier: MIT
// The window's OFDM builder: the custom OFDM view, and a button that plays its waveform in the
// arb mode.
#pragma once

#include <QDialog>

class CentralWidget;
class ModeViewOFDM;

// The OFDM view has no generator of its own; playing hands its samples to the arb mode, which
// loops them at fftSize x spacing like any loaded file.
class OFDMBuilderDialog : public QDialog {
  Q_OBJECT

public:
  OFDMBuilderDialog(CentralWidget* central, QWidget* parent = nullptr);

  ModeViewOFDM* view() const { return ofdmView; }

public slots:
  // Builds the waveform, loads it into the arb mode at the view's rate and makes arb the
  // playing mode; a configuration that builds no sample changes nothing.
  void playInArb();

private:
  CentralWidget* central;
  ModeViewOFDM* ofdmView;
};

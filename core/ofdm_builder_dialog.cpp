// SPDX-License-Identifier: MIT
// The window's OFDM builder: the custom OFDM view, and a button that plays its waveform in the
// arb mode.
#include "core/ofdm_builder_dialog.h"

#include "arb/arb_mode/mode_view_arb.h"
#include "core/central_widget.h"
#include "wireless/ofdm/mode_view_ofdm.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int arbModeIndex = 13;

ModeViewArb* arbView(CentralWidget* central) {
  for (ModeWidget* view : central->views())
    if (view->modeIndex() == arbModeIndex) return qobject_cast<ModeViewArb*>(view);
  return nullptr;
}

}  // namespace

OFDMBuilderDialog::OFDMBuilderDialog(CentralWidget* central, QWidget* parent)
    : QDialog(parent), central(central), ofdmView(new ModeViewOFDM(this)) {
  setWindowTitle("OFDM Waveform Builder");
  auto* playButton = new QPushButton("Play in Arb Mode", this);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(ofdmView);
  layout->addWidget(playButton);
  connect(playButton, &QPushButton::clicked, this, &OFDMBuilderDialog::playInArb);
}

void OFDMBuilderDialog::playInArb() {
  ModeViewArb* arb = arbView(central);
  std::vector<Sample> samples = ofdmView->generateWaveform();
  if (!arb || samples.empty()) return;
  arb->setSampleRate(ofdmView->sampleRate());
  arb->loadSamples(std::move(samples));
  central->selectMode(arbModeIndex);
}

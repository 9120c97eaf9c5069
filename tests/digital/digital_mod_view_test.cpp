// SPDX-License-Identifier: MIT
// The digital modulation view on its own: the pulse-shaping taps by filter type and what its
// three define dialogs change, and when they restart the output.
#include "digital/custom_iq_dialog.h"
#include "digital/digital_mod/mode_view_digital_mod.h"
#include "digital/filter_designs.h"
#include "digital/pulse_shaping_filter_editor_dialog.h"
#include "digital/symbol_editor_dialog.h"
#include "widgets/my_combo_box.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <functional>

namespace {

// The define slots' dialogs are answered by `answer` instead of a modal loop.
class AnsweredView : public ModeViewDigitalMod {
public:
  std::function<int(QDialog&)> answer;

protected:
  int runDialog(QDialog& dialog) override { return answer(dialog); }
};

TEST(DigitalModView, PulseShapingTapsByFilterType) {
  AnsweredView view;
  view.setOversample(8);
  view.setFilterLength(4);
  view.setFilterAlpha(0.5);
  view.setCustomFilterTaps({1.0f, 2.0f, 3.0f});
  std::vector<float> halfSine(33), rect(33), gaussian(33);
  designHalfSine(halfSine.data(), 33, 8);
  designRectangular(rect.data(), 33, 1.0 / 8, 8);
  designGaussian(gaussian.data(), 33, 0.5, 8);
  const std::pair<FilterType, std::vector<float>> cases[] = {{FilterHalfSine, halfSine},
                                                             {FilterRectangular, rect},
                                                             {FilterGaussian, gaussian},
                                                             {FilterCustom, {1.0f, 2.0f, 3.0f}}};
  for (const auto& [type, taps] : cases) {
    view.setFilterType(type);
    EXPECT_EQ(view.pulseShapingTaps(), taps) << type;
  }
}

TEST(DigitalModView, DefineDialogsReplaceOnAcceptAndRestartWhenInForce) {
  AnsweredView view;
  view.setDefaults();
  QSignalSpy updated(&view, &ModeWidget::updated);

  // The modulation: stored and reported whichever modulation is selected.
  view.answer = [](QDialog& dialog) {
    auto* maps = dialog.findChild<MyComboBox*>();
    maps->setCurrentIndex(maps->findData(DigitalModQAM16));
    return static_cast<int>(QDialog::Accepted);
  };
  view.defineCustomModulation();
  EXPECT_EQ(view.customModulation().states, defaultModulationMap(DigitalModQAM16).states);
  EXPECT_EQ(updated.count(), 1);

  // The filter: a custom one in force restarts the output even when the dialog is cancelled.
  const std::vector<float> taps = view.customFilterTaps();
  view.answer = [](QDialog& dialog) {
    static_cast<PulseShapingFilterEditorDialog&>(dialog).removeRow();
    return static_cast<int>(QDialog::Rejected);
  };
  updated.clear();
  view.defineCustomFilter();
  EXPECT_EQ(updated.count(), 0);
  view.setFilterType(FilterCustom);
  updated.clear();
  view.defineCustomFilter();
  EXPECT_EQ(updated.count(), 1);
  EXPECT_EQ(view.customFilterTaps(), taps);

  // The pattern: replaced on acceptance, a restart only when it is the bit source.
  view.answer = [](QDialog& dialog) {
    static_cast<SymbolEditorDialog&>(dialog).setText("101");
    return static_cast<int>(QDialog::Accepted);
  };
  updated.clear();
  view.defineCustomSequence();
  EXPECT_EQ(view.customBitString(), "101");
  EXPECT_EQ(updated.count(), 0);
  view.setData(-1);
  updated.clear();
  view.defineCustomSequence();
  EXPECT_EQ(updated.count(), 1);
}

}  // namespace

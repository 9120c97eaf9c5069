// SPDX-License-Identifier: MIT
// The remote rows of the impairment panel.
#include "core/impairment_rows.h"

#include "core/impairment_widget.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"

bool handleImpairmentRow(ImpairmentWidget& panel, Scpi& command, int row) {
  bool on = false;
  int number = 0;
  double value = 0.0;
  switch (row) {
    case 28:
      if (command.nextFrequency(value)) panel.setFrequencyOffset(value);
      break;
    case 29: addDoubleResponse(command, panel.frequencyOffset()); break;
    case 30:
      if (command.nextBool(on)) panel.setLowSpurMode(on);
      break;
    case 31: addBoolResponse(command, panel.lowSpurMode()); break;
    case 32:
      if (command.nextInt(number)) panel.setIOffset(number);
      break;
    case 33: addIntResponse(command, panel.iqOffset().first); break;
    case 34:
      if (command.nextInt(number)) panel.setQOffset(number);
      break;
    case 35: addIntResponse(command, panel.iqOffset().second); break;
    case 36:
      if (command.nextDouble(value)) panel.setSampleRateError(value);
      break;
    case 37: addDoubleResponse(command, panel.sampleRateError()); break;
    case 38:
      if (command.nextBool(on)) panel.setAWGNEnabled(on);
      break;
    case 39: addBoolResponse(command, panel.awgnEnabled()); break;
    case 40:
      if (command.nextDouble(value)) panel.setAWGNSNR(value);
      break;
    case 41: addDoubleResponse(command, panel.awgnSnr()); break;
    // The bandwidth is read and dropped, and only the restart happens: scripts written against
    // the instrument set it on the panel. The query answers the panel's value.
    case 42:
      if (command.nextDouble(value)) panel.setAWGNBW(value);
      break;
    case 43: addDoubleResponse(command, panel.awgnBandwidth()); break;
    case 46:
      if (command.nextDouble(value)) panel.setTimebaseAdjust(value);
      break;
    case 47: addDoubleResponse(command, panel.timebaseOffset()); break;
    default: return false;
  }
  return true;
}

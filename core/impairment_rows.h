// SPDX-License-Identifier: MIT
// The remote rows of the impairment panel: 28 to 43, and the timebase offset, 46 and 47.
#pragma once

class ImpairmentWidget;
class Scpi;

// Every setting goes through the panel's slot, so it clamps and restarts as an edit would.
// Returns false for a row that isn't one of the panel's.
bool handleImpairmentRow(ImpairmentWidget& panel, Scpi& command, int row);

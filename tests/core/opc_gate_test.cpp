// SPDX-License-Identifier: MIT
// Operation-complete gate: "*OPC" followed by "*ESR?" through the restart sequences.
#include "core/opc_gate.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

struct Step {
  std::string name;
  std::function<void(OpcGate&)> apply;
};

const Step pending{"pending", [](OpcGate& g) { g.markSettingsPending(); }};
const Step clearPending{"clear", [](OpcGate& g) { g.clearSettingsPending(); }};
const Step ready{"ready", [](OpcGate& g) { g.setOutputReady(true); }};
const Step notReady{"notReady", [](OpcGate& g) { g.setOutputReady(false); }};
const Step opc{"opc", [](OpcGate& g) { g.armOpc(); }};

struct Sequence {
  const char* what;
  std::vector<Step> steps;
  bool complete;
};

// A stable test name for CTest (the default prints the object's bytes, pointers included).
void PrintTo(const Sequence& s, std::ostream* os) { *os << s.what; }

class OpcGateSequence : public ::testing::TestWithParam<Sequence> {};

TEST_P(OpcGateSequence, EsrAnswersAsTheRestartLeftIt) {
  OpcGate gate;
  for (const Step& step : GetParam().steps) step.apply(gate);
  EXPECT_EQ(gate.opcComplete(), GetParam().complete) << GetParam().what;
}

// The sequences a remote client meets: a steady output, a full restart, a restart still
// building, and a change while stopped (preset load).
INSTANTIATE_TEST_SUITE_P(
    Sequences, OpcGateSequence,
    ::testing::Values(
        Sequence{"opc before any output", {opc}, false},
        Sequence{"opc before output, then output", {opc, ready}, true},
        Sequence{"steady output", {ready, opc}, true},
        Sequence{"restart completes after opc",
                 {ready, pending, opc, notReady, clearPending, ready},
                 true},
        Sequence{"opc while settings pending, output ready", {ready, pending, opc}, false},
        Sequence{"pending never cleared: ready does not complete", {pending, opc, ready}, false},
        Sequence{"ready false does not complete", {opc, notReady}, false}),
    [](const ::testing::TestParamInfo<Sequence>& info) { return std::to_string(info.index); });

}  // namespace

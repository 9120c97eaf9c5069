// SPDX-License-Identifier: MIT
// Tests of the simulated krt_api: device list, open, handles, settings checks, configuration.
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "krt/krt_api.h"
#include "krt_child.h"

using namespace krttest;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

}  // namespace

struct DeviceListRow {
  const char* devices;  // nullptr: KRT40_SIM_DEVICES unset
  int capacity;
  std::vector<int> expected;
};

TEST(KrtSession, DeviceListHonoursConfigurationAndCapacity) {
  const std::vector<DeviceListRow> rows = {
      {nullptr, 8, {kSerial}},
      {"", 8, {}},
      {"1,2,3,4,5,6,7,8,9,10", 8, {1, 2, 3, 4, 5, 6, 7, 8}},
      {"1,2,3,4,5,6,7,8,9,10", 3, {1, 2, 3}},
      {"1,2,3", 0, {}},
      {" 5 , 6 ", 8, {5, 6}},
  };
  for (const DeviceListRow& row : rows) {
    std::map<std::string, std::string> env;
    if (row.devices) env["KRT40_SIM_DEVICES"] = row.devices;
    const ChildResult c = runInChild(env, [&](ChildReport& r) {
      std::vector<int> serials(10, -7);
      int count = row.capacity;
      CHILD_CHECK(r, krtGetDeviceList(serials.data(), &count) == 0);
      r.value("count", count);
      for (int i = 0; i < count; ++i) r.value("s" + std::to_string(i), serials[i]);
      for (int i = count; i < 10; ++i) CHILD_CHECK(r, serials[i] == -7);  // nothing written past
    });
    SCOPED_TRACE(row.devices ? row.devices : "(unset)");
    ASSERT_EQ(c.exitCode, 0) << c.describe();
    ASSERT_EQ(c.at("count"), static_cast<double>(row.expected.size()));
    for (size_t i = 0; i < row.expected.size(); ++i)
      EXPECT_EQ(c.at("s" + std::to_string(i)), row.expected[i]);
  }
}

TEST(KrtSession, OpenWaitsThenReportsTheDevice) {
  const ChildResult c =
      runInChild({{"KRT40_SIM_DEVICES", "21000001,21000002"}, {"KRT40_SIM_OPEN_MS", "300"}},
                 [](ChildReport& r) {
                   double t0 = monotonicSeconds();
                   int h = -1;
                   CHILD_CHECK(r, krtOpenDeviceBySerial(&h, kSerial) == 0);
                   r.value("openSeconds", monotonicSeconds() - t0);
                   r.value("handle", h);
                   int serial = -1, firmware = -1;
                   CHILD_CHECK(r, krtGetSerialNumber(h, &serial) == 0);
                   CHILD_CHECK(r, krtGetFirmwareVersion(h, &firmware) == 0);
                   r.value("serial", serial);
                   r.value("firmware", firmware);
                   CHILD_CHECK(r, std::strcmp(krtGetAPIVersion(), "1.0.0 (simulated)") == 0);
                   CHILD_CHECK(r, krtGetUSBStatus(h) == 0);
                   CHILD_CHECK(r, krtEnablePowerSavingCpuMode(1) == 0);

                   // Already open: fails after the open time, and leaves the first session alone.
                   t0 = monotonicSeconds();
                   int again = 5;
                   CHILD_CHECK(r, krtOpenDeviceBySerial(&again, kSerial) != 0);
                   r.value("failSeconds", monotonicSeconds() - t0);
                   CHILD_CHECK(r, again == -1);
                   CHILD_CHECK(r, krtGetUSBStatus(h) == 0);
                   // Unknown serial.
                   int unknown = 5;
                   CHILD_CHECK(r, krtOpenDeviceBySerial(&unknown, 12345) != 0);
                   CHILD_CHECK(r, unknown == -1);
                   CHILD_CHECK(r, krtOpenDeviceBySerial(nullptr, kSerial) != 0);
                   // A second device opens alongside; after a close the serial opens again.
                   int second = -1;
                   CHILD_CHECK(r, krtOpenDeviceBySerial(&second, 21000002) == 0);
                   CHILD_CHECK(r, second >= 0 && second != h);
                   CHILD_CHECK(r, krtCloseDevice(h) == 0);
                   int reopened = -1;
                   CHILD_CHECK(r, krtOpenDeviceBySerial(&reopened, kSerial) == 0);
                   CHILD_CHECK(r, reopened != h);  // handles are not reused
                   CHILD_CHECK(r, krtCloseDevice(reopened) == 0);
                   CHILD_CHECK(r, krtCloseDevice(second) == 0);
                 });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  EXPECT_GE(c.at("openSeconds"), 0.29);
  EXPECT_LT(c.at("openSeconds"), 1.5);
  EXPECT_GE(c.at("failSeconds"), 0.29);
  EXPECT_EQ(c.at("serial"), kSerial);
  EXPECT_EQ(c.at("firmware"), 3);
}

TEST(KrtSession, CallsOnAHandleThatIsNotOpenFailAndDoNothing) {
  const ChildResult c = runInChild({{"KRT40_SIM_SPEED", "0"}}, [](ChildReport& r) {
    const int closed = openDefault(r);
    CHILD_CHECK(r, krtCloseDevice(closed) == 0);
    for (const int h : {closed, closed + 1, -1, 99}) {
      std::vector<float> iq(20, 0.5f);
      int serial = -7, version = -7;
      float temperature = -7;
      CHILD_CHECK(r, krtCloseDevice(h) != 0);
      CHILD_CHECK(r, krtAbort(h) != 0);
      CHILD_CHECK(r, krtGetSerialNumber(h, &serial) != 0);
      CHILD_CHECK(r, krtGetFirmwareVersion(h, &version) != 0);
      CHILD_CHECK(r, krtGetUSBStatus(h) != 0);
      CHILD_CHECK(r, krtReadTemperature(h, &temperature) != 0);
      CHILD_CHECK(r, krtSetFrequency(h, 1e9) != 0);
      CHILD_CHECK(r, krtSetLevel(h, -10) != 0);
      CHILD_CHECK(r, krtSetSampleRate(h, 1e6) != 0);
      CHILD_CHECK(r, krtSetDigitalTuning(h, 1) != 0);
      CHILD_CHECK(r, krtSetIQOffset(h, 1, 2) != 0);
      CHILD_CHECK(r, krtSetTimebase(h, 1) != 0);
      CHILD_CHECK(r, krtSetTimebaseOffset(h, 1) != 0);
      CHILD_CHECK(r, krtSetRFOutputState(h, 1) != 0);
      CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 10) != 0);
      CHILD_CHECK(r, krtSubmitTrigger(h) != 0);
      CHILD_CHECK(r, krtFlushAndWait(h) != 0);
      CHILD_CHECK(r, serial == -7 && version == -7 && temperature == -7);
    }
    // The device itself is unharmed: it opens again.
    const int h = openDefault(r);
    CHILD_CHECK(r, krtCloseDevice(h) == 0);
  });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
}

// One settings call, its expected status and the value the recording shows afterwards.
struct ClampRow {
  const char* name;
  std::function<int(int)> baseline;  // sets the field to a known value first
  std::function<int(int)> call;
  bool warns;
  const char* field;  // key in the capture segment
  Json expected;
};

TEST(KrtSession, OutOfRangeSettingsAreClampedWithAWarning) {
  const std::vector<ClampRow> rows = {
      {"frequency in range", [](int h) { return krtSetFrequency(h, 2e9); },
       [](int h) { return krtSetFrequency(h, 1e9); }, false, "core:frequency", 1e9},
      {"frequency low", [](int h) { return krtSetFrequency(h, 2e9); },
       [](int h) { return krtSetFrequency(h, 29e6); }, true, "core:frequency", 30e6},
      {"frequency high", [](int h) { return krtSetFrequency(h, 2e9); },
       [](int h) { return krtSetFrequency(h, 6.5e9); }, true, "core:frequency", 6e9},
      {"frequency NaN", [](int h) { return krtSetFrequency(h, 2e9); },
       [](int h) { return krtSetFrequency(h, kNaN); }, true, "core:frequency", 2e9},
      {"frequency inf", [](int h) { return krtSetFrequency(h, 2e9); },
       [](int h) { return krtSetFrequency(h, kInf); }, true, "core:frequency", 2e9},
      {"level in range", [](int h) { return krtSetLevel(h, -20); },
       [](int h) { return krtSetLevel(h, -50); }, false, "krt40:level_dbm", -50.0},
      {"level low", [](int h) { return krtSetLevel(h, -20); },
       [](int h) { return krtSetLevel(h, -130); }, true, "krt40:level_dbm", -120.0},
      {"level high", [](int h) { return krtSetLevel(h, -20); },
       [](int h) { return krtSetLevel(h, 11); }, true, "krt40:level_dbm", 10.0},
      {"level NaN", [](int h) { return krtSetLevel(h, -20); },
       [](int h) { return krtSetLevel(h, kNaN); }, true, "krt40:level_dbm", -20.0},
      {"level -inf", [](int h) { return krtSetLevel(h, -20); },
       [](int h) { return krtSetLevel(h, -kInf); }, true, "krt40:level_dbm", -20.0},
      {"rate in range", [](int h) { return krtSetSampleRate(h, 1e6); },
       [](int h) { return krtSetSampleRate(h, 54e6); }, false, "krt40:sample_rate", 54e6},
      {"rate high", [](int h) { return krtSetSampleRate(h, 1e6); },
       [](int h) { return krtSetSampleRate(h, 60e6); }, true, "krt40:sample_rate", 54e6},
      {"rate zero", [](int h) { return krtSetSampleRate(h, 1e6); },
       [](int h) { return krtSetSampleRate(h, 0); }, true, "krt40:sample_rate", 1.0},
      {"rate negative", [](int h) { return krtSetSampleRate(h, 1e6); },
       [](int h) { return krtSetSampleRate(h, -5); }, true, "krt40:sample_rate", 1.0},
      {"rate NaN", [](int h) { return krtSetSampleRate(h, 1e6); },
       [](int h) { return krtSetSampleRate(h, kNaN); }, true, "krt40:sample_rate", 1e6},
      {"iq offset in range", [](int h) { return krtSetIQOffset(h, 0, 0); },
       [](int h) { return krtSetIQOffset(h, 1024, -1024); }, false, "krt40:iq_offset",
       Json::array({1024, -1024})},
      {"iq offset high", [](int h) { return krtSetIQOffset(h, 0, 0); },
       [](int h) { return krtSetIQOffset(h, 2000, 5); }, true, "krt40:iq_offset",
       Json::array({1024, 5})},
      {"iq offset low", [](int h) { return krtSetIQOffset(h, 0, 0); },
       [](int h) { return krtSetIQOffset(h, 5, -1025); }, true, "krt40:iq_offset",
       Json::array({5, -1024})},
      {"timebase offset in range", [](int h) { return krtSetTimebaseOffset(h, 0); },
       [](int h) { return krtSetTimebaseOffset(h, -1.5); }, false, "krt40:timebase_offset_ppm",
       -1.5},
      {"timebase offset high", [](int h) { return krtSetTimebaseOffset(h, 0.5); },
       [](int h) { return krtSetTimebaseOffset(h, 3); }, true, "krt40:timebase_offset_ppm", 2.0},
      {"timebase offset low", [](int h) { return krtSetTimebaseOffset(h, 0.5); },
       [](int h) { return krtSetTimebaseOffset(h, -2.5); }, true, "krt40:timebase_offset_ppm",
       -2.0},
      {"timebase offset NaN", [](int h) { return krtSetTimebaseOffset(h, 0.5); },
       [](int h) { return krtSetTimebaseOffset(h, kNaN); }, true, "krt40:timebase_offset_ppm", 0.5},
      {"timebase external", [](int h) { return krtSetTimebase(h, 0); },
       [](int h) { return krtSetTimebase(h, 1); }, false, "krt40:timebase", 1},
      {"timebase 2", [](int h) { return krtSetTimebase(h, 0); },
       [](int h) { return krtSetTimebase(h, 2); }, true, "krt40:timebase", 1},
      {"timebase -1", [](int h) { return krtSetTimebase(h, 1); },
       [](int h) { return krtSetTimebase(h, -1); }, true, "krt40:timebase", 0},
      {"digital tuning on", [](int h) { return krtSetDigitalTuning(h, 0); },
       [](int h) { return krtSetDigitalTuning(h, 1); }, false, "krt40:digital_tuning", true},
      {"digital tuning 5", [](int h) { return krtSetDigitalTuning(h, 0); },
       [](int h) { return krtSetDigitalTuning(h, 5); }, true, "krt40:digital_tuning", true},
      {"rf output off", [](int h) { return krtSetRFOutputState(h, 1); },
       [](int h) { return krtSetRFOutputState(h, 0); }, false, "krt40:rf_output", false},
      {"rf output 7", [](int h) { return krtSetRFOutputState(h, 0); },
       [](int h) { return krtSetRFOutputState(h, 7); }, true, "krt40:rf_output", true},
  };
  TempDir dir;
  const std::string prefix = dir.path("clamp");
  const ChildResult c =
      runInChild({{"KRT40_SIM_SPEED", "0"}, {"KRT40_SIM_RECORD", prefix}}, [&](ChildReport& r) {
        const int h = openDefault(r);
        const float sample[2] = {1.0f, 0.0f};
        for (size_t k = 0; k < rows.size(); ++k) {
          CHILD_CHECK(r, rows[k].baseline(h) == 0);
          CHILD_CHECK(r, krtSubmitIQ(h, sample, 1) == 0);  // sample 2k
          r.value("ret" + std::to_string(k), rows[k].call(h));
          CHILD_CHECK(r, krtSubmitIQ(h, sample, 1) == 0);  // sample 2k + 1
        }
        CHILD_CHECK(r, krtCloseDevice(h) == 0);
      });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  const Json meta = readJson(prefix + ".sigmf-meta");
  ASSERT_TRUE(meta.contains("captures"));
  for (size_t k = 0; k < rows.size(); ++k) {
    SCOPED_TRACE(rows[k].name);
    const double ret = c.at("ret" + std::to_string(k));
    if (rows[k].warns) {
      EXPECT_NE(ret, 0);
    } else {
      EXPECT_EQ(ret, 0);
    }
    const Json capture = captureAt(meta, static_cast<long long>(2 * k + 1));
    ASSERT_TRUE(capture.contains(rows[k].field)) << capture.dump();
    EXPECT_EQ(capture[rows[k].field], rows[k].expected);
  }
}

// A malformed variable: one line on standard error, and the default in force.
struct MalformedRow {
  const char* name;
  const char* value;
  std::function<void(ChildReport&)> behaviour;  // checks the default, may be empty
};

TEST(KrtSession, MalformedVariableFallsBackToTheDefault) {
  const std::vector<MalformedRow> rows = {
      {"KRT40_SIM_DEVICES", "12,abc",
       [](ChildReport& r) {
         int serials[8] = {0};
         int count = 8;
         CHILD_CHECK(r, krtGetDeviceList(serials, &count) == 0);
         CHILD_CHECK(r, count == 1 && serials[0] == kSerial);
       }},
      {"KRT40_SIM_DEVICES", "1,,2", {}},
      {"KRT40_SIM_OPEN_MS", "soon", {}},
      {"KRT40_SIM_SPEED", "-1",
       [](ChildReport& r) {
         // Paced at real time: 0.2 s of samples through a 100 ms queue take about 0.1 s.
         const int h = openDefault(r);
         CHILD_CHECK(r, krtSetSampleRate(h, 1e5) == 0);
         std::vector<float> iq(2 * 20000, 0.25f);
         const double t0 = monotonicSeconds();
         CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 20000) == 0);
         r.value("blocked", monotonicSeconds() - t0);
         CHILD_CHECK(r, krtAbort(h) == 0);
         CHILD_CHECK(r, krtCloseDevice(h) == 0);
       }},
      {"KRT40_SIM_QUEUE_MS", "0", {}},
      {"KRT40_SIM_RECORD_MAX", "1.5", {}},
      {"KRT40_SIM_FAIL_AFTER_MS", "later",
       [](ChildReport& r) {
         const int h = openDefault(r);
         CHILD_CHECK(r, krtGetUSBStatus(h) == 0);
         CHILD_CHECK(r, krtCloseDevice(h) == 0);
       }},
      {"KRT40_SIM_TEMPERATURE", "hot",
       [](ChildReport& r) {
         const int h = openDefault(r);
         float t = 0;
         CHILD_CHECK(r, krtReadTemperature(h, &t) == 0);
         CHILD_CHECK(r, t >= 28 && t < 29);  // the warm-up curve has just begun
         CHILD_CHECK(r, krtCloseDevice(h) == 0);
       }},
  };
  for (const MalformedRow& row : rows) {
    SCOPED_TRACE(std::string(row.name) + "=" + row.value);
    const ChildResult c = runInChild({{row.name, row.value}}, [&](ChildReport& r) {
      krtGetAPIVersion();  // the first call reads the configuration
      if (row.behaviour) row.behaviour(r);
    });
    ASSERT_EQ(c.exitCode, 0) << c.describe();
    EXPECT_EQ(std::count(c.stderrText.begin(), c.stderrText.end(), '\n'), 1) << c.stderrText;
    EXPECT_NE(c.stderrText.find(row.name), std::string::npos) << c.stderrText;
    if (std::string(row.name) == "KRT40_SIM_SPEED") {
      EXPECT_GT(c.at("blocked"), 0.05);
    }
  }
}

TEST(KrtSession, TemperatureIsFixedOrWarmsUp) {
  const ChildResult fixed = runInChild({{"KRT40_SIM_TEMPERATURE", "37.5"}}, [](ChildReport& r) {
    const int h = openDefault(r);
    float t = 0;
    CHILD_CHECK(r, krtReadTemperature(h, &t) == 0);
    CHILD_CHECK(r, t == 37.5f);
    CHILD_CHECK(r, krtReadTemperature(h, nullptr) != 0);
    CHILD_CHECK(r, krtCloseDevice(h) == 0);
  });
  ASSERT_EQ(fixed.exitCode, 0) << fixed.describe();
  const ChildResult curve = runInChild({}, [](ChildReport& r) {
    const int h = openDefault(r);
    float first = 0, later = 0;
    CHILD_CHECK(r, krtReadTemperature(h, &first) == 0);
    usleep(200000);
    CHILD_CHECK(r, krtReadTemperature(h, &later) == 0);
    CHILD_CHECK(r, first >= 28 && first < 28.5);
    CHILD_CHECK(r, later > first && later < 45);
    CHILD_CHECK(r, krtCloseDevice(h) == 0);
  });
  ASSERT_EQ(curve.exitCode, 0) << curve.describe();
}

// SPDX-License-Identifier: MIT
// Tests of the simulated krt_api: device list, open, handles, settings checks, configuration.
#include <cmath>
#include <cstring>
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
      runInChild({{"KRT40_SIM_DEVICES", "21000001,21000002"},
                  {"KRT40_SIM_OPEN_MS", "300"},
                  {"KRT40_SIM_TEMPERATURE", "37.5"}},
                 [](ChildReport& r) {
                   double t0 = monotonicSeconds();
                   int h = -1, serial = -1, firmware = -1;
                   CHILD_CHECK(r, krtOpenDeviceBySerial(&h, kSerial) == 0);
                   r.value("openSeconds", monotonicSeconds() - t0);
                   CHILD_CHECK(r, krtGetSerialNumber(h, &serial) == 0 && serial == kSerial);
                   CHILD_CHECK(r, krtGetFirmwareVersion(h, &firmware) == 0 && firmware == 3);
                   float temperature = 0;
                   CHILD_CHECK(r, krtReadTemperature(h, &temperature) == 0 && temperature == 37.5f);
                   CHILD_CHECK(r, krtReadTemperature(h, nullptr) != 0);
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
}

TEST(KrtSession, CallsOnAHandleThatIsNotOpenFailAndDoNothing) {
  const ChildResult c = runInChild({{"KRT40_SIM_SPEED", "0"}}, [](ChildReport& r) {
    const int closed = openDefault(r);
    CHILD_CHECK(r, krtCloseDevice(closed) == 0);
    for (const int h : {closed, closed + 1, -1, 99}) {
      std::vector<float> iq(20, 0.5f);
      int serial = -7, version = -7;
      float temperature = -7;
      // All 17 calls answer -1, "handle not open".
      const int sum = krtCloseDevice(h) + krtAbort(h) + krtGetSerialNumber(h, &serial) +
                      krtGetFirmwareVersion(h, &version) + krtGetUSBStatus(h) +
                      krtReadTemperature(h, &temperature) + krtSetFrequency(h, 1e9) +
                      krtSetLevel(h, -10) + krtSetSampleRate(h, 1e6) + krtSetDigitalTuning(h, 1) +
                      krtSetIQOffset(h, 1, 2) + krtSetTimebase(h, 1) + krtSetTimebaseOffset(h, 1) +
                      krtSetRFOutputState(h, 1) + krtSubmitIQ(h, iq.data(), 10) +
                      krtSubmitTrigger(h) + krtFlushAndWait(h);
      CHILD_CHECK(r, sum == -17);
      CHILD_CHECK(r, serial == -7 && version == -7 && temperature == -7);
    }
    // The device itself is unharmed: it opens again.
    const int h = openDefault(r);
    CHILD_CHECK(r, krtCloseDevice(h) == 0);
  });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
}

// The settings a clamp row exercises, each with its key in the capture segments.
enum Setting { Frequency, Level, Rate, IqOffset, TimebaseOffset, Timebase, Tuning, RfOutput };
const char* const kFields[] = {"core:frequency",
                               "krt40:level_dbm",
                               "krt40:sample_rate",
                               "krt40:iq_offset",
                               "krt40:timebase_offset_ppm",
                               "krt40:timebase",
                               "krt40:digital_tuning",
                               "krt40:rf_output"};

int set(int h, Setting setting, double a, double b) {
  switch (setting) {
    case Frequency: return krtSetFrequency(h, a);
    case Level: return krtSetLevel(h, a);
    case Rate: return krtSetSampleRate(h, a);
    case IqOffset: return krtSetIQOffset(h, static_cast<int>(a), static_cast<int>(b));
    case TimebaseOffset: return krtSetTimebaseOffset(h, a);
    case Timebase: return krtSetTimebase(h, static_cast<int>(a));
    case Tuning: return krtSetDigitalTuning(h, static_cast<int>(a));
    case RfOutput: return krtSetRFOutputState(h, static_cast<int>(a));
  }
  return -99;
}

// One settings call after a known value (`before`; the I/Q offset starts at 0, 0), its
// status and the value the recording shows afterwards.
struct ClampRow {
  Setting setting;
  double before, a, b;
  bool warns;
  Json expected;
};

TEST(KrtSession, OutOfRangeSettingsAreClampedWithAWarning) {
  const std::vector<ClampRow> rows = {{Frequency, 2e9, 1e9, 0, false, 1e9},
                                      {Frequency, 2e9, 29e6, 0, true, 30e6},
                                      {Frequency, 2e9, 6.5e9, 0, true, 6e9},
                                      {Frequency, 2e9, kNaN, 0, true, 2e9},
                                      {Frequency, 2e9, kInf, 0, true, 2e9},
                                      {Level, -20, -130, 0, true, -120.0},
                                      {Level, -20, 11, 0, true, 10.0},
                                      {Level, -20, kNaN, 0, true, -20.0},
                                      {Level, -20, -kInf, 0, true, -20.0},
                                      {Rate, 1e6, 54e6, 0, false, 54e6},
                                      {Rate, 1e6, 60e6, 0, true, 54e6},
                                      {Rate, 1e6, 0, 0, true, 1.0},
                                      {Rate, 1e6, -5, 0, true, 1.0},
                                      {Rate, 1e6, kNaN, 0, true, 1e6},
                                      {IqOffset, 0, 1024, -1024, false, Json::array({1024, -1024})},
                                      {IqOffset, 0, 2000, 5, true, Json::array({1024, 5})},
                                      {IqOffset, 0, 5, -1025, true, Json::array({5, -1024})},
                                      {TimebaseOffset, 0, -1.5, 0, false, -1.5},
                                      {TimebaseOffset, 0.5, 3, 0, true, 2.0},
                                      {TimebaseOffset, 0.5, -2.5, 0, true, -2.0},
                                      {TimebaseOffset, 0.5, kNaN, 0, true, 0.5},
                                      {Timebase, 0, 1, 0, false, 1},
                                      {Timebase, 0, 2, 0, true, 1},
                                      {Timebase, 1, -1, 0, true, 0},
                                      {Tuning, 0, 1, 0, false, true},
                                      {Tuning, 0, 5, 0, true, true},
                                      {RfOutput, 1, 0, 0, false, false},
                                      {RfOutput, 0, 7, 0, true, true}};
  TempDir dir;
  const std::string prefix = dir.path("clamp");
  const ChildResult c =
      runInChild({{"KRT40_SIM_SPEED", "0"}, {"KRT40_SIM_RECORD", prefix}}, [&](ChildReport& r) {
        const int h = openDefault(r);
        const float sample[2] = {1.0f, 0.0f};
        for (size_t k = 0; k < rows.size(); ++k) {
          CHILD_CHECK(r, set(h, rows[k].setting, rows[k].before, 0) == 0);
          CHILD_CHECK(r, krtSubmitIQ(h, sample, 1) == 0);  // sample 2k
          r.value("ret" + std::to_string(k), set(h, rows[k].setting, rows[k].a, rows[k].b));
          CHILD_CHECK(r, krtSubmitIQ(h, sample, 1) == 0);  // sample 2k + 1
        }
        CHILD_CHECK(r, krtCloseDevice(h) == 0);
      });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  const Json meta = readJson(prefix + ".sigmf-meta");
  ASSERT_TRUE(meta.contains("captures"));
  for (size_t k = 0; k < rows.size(); ++k) {
    const char* field = kFields[rows[k].setting];
    SCOPED_TRACE(std::string(field) + " row " + std::to_string(k));
    EXPECT_EQ(c.at("ret" + std::to_string(k)) != 0, rows[k].warns);
    const Json capture = captureAt(meta, static_cast<long long>(2 * k + 1));
    ASSERT_TRUE(capture.contains(field)) << capture.dump();
    EXPECT_EQ(capture[field], rows[k].expected);
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
      {"KRT40_SIM_SPEED", "-1", {}},
      {"KRT40_SIM_QUEUE_MS", "0", {}},
      {"KRT40_SIM_RECORD_MAX", "1.5", {}},
      {"KRT40_SIM_FAIL_AFTER_MS", "later", {}},
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
  }
}

// Without a fixed temperature the device warms up from 28 degrees C towards 45.
TEST(KrtSession, TemperatureWarmsUp) {
  const ChildResult c = runInChild({}, [](ChildReport& r) {
    const int h = openDefault(r);
    float first = 0, later = 0;
    CHILD_CHECK(r, krtReadTemperature(h, &first) == 0);
    usleep(200000);
    CHILD_CHECK(r, krtReadTemperature(h, &later) == 0);
    CHILD_CHECK(r, first >= 28 && first < 28.5);
    CHILD_CHECK(r, later > first && later < 45);
    CHILD_CHECK(r, krtCloseDevice(h) == 0);
  });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
}

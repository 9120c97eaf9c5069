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
#include "krt_scenario.h"

using namespace krttest;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

struct DeviceListRow {
  const char* what;
  const char* devices;
  int capacity;
  std::vector<int> expected;
};

void PrintTo(const DeviceListRow& row, std::ostream* os) { *os << row.what; }

class KrtDeviceList : public ::testing::TestWithParam<DeviceListRow> {};

// The default list is the one every other scenario opens.
TEST_P(KrtDeviceList, HonoursConfigurationAndCapacity) {
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_DEVICES", GetParam().devices}}));
  std::vector<int> serials(10, -7);
  int count = GetParam().capacity;
  ASSERT_EQ(krtGetDeviceList(serials.data(), &count), 0);
  serials.resize(static_cast<size_t>(count));
  EXPECT_EQ(serials, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, KrtDeviceList,
                         ::testing::Values(DeviceListRow{"none", "", 8, {}},
                                           DeviceListRow{
                                               "tenOfThree", "1,2,3,4,5,6,7,8,9,10", 3, {1, 2, 3}},
                                           DeviceListRow{"blanks", " 5 , 6 ", 8, {5, 6}}));

TEST(KrtSession, OpenWaitsThenReportsTheDevice) {
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_DEVICES", "21000001,21000002"},
                              {"KRT40_SIM_OPEN_MS", "300"},
                              {"KRT40_SIM_TEMPERATURE", "37.5"}}));
  double t0 = monotonicSeconds();
  const int h = openDefault();
  const double openSeconds = monotonicSeconds() - t0;
  EXPECT_GE(openSeconds, 0.29);
  EXPECT_LT(openSeconds, 1.5);
  int serial = -1, firmware = -1;
  float temperature = 0;
  EXPECT_TRUE(krtGetSerialNumber(h, &serial) == 0 && serial == kSerial);
  EXPECT_TRUE(krtGetFirmwareVersion(h, &firmware) == 0 && firmware == 3);
  EXPECT_TRUE(krtReadTemperature(h, &temperature) == 0 && temperature == 37.5f);
  EXPECT_STREQ(krtGetAPIVersion(), "1.0.0 (simulated)");

  // Already open: fails after the open time, and leaves the first session alone.
  t0 = monotonicSeconds();
  int again = 5;
  EXPECT_NE(krtOpenDeviceBySerial(&again, kSerial), 0);
  EXPECT_GE(monotonicSeconds() - t0, 0.29);
  EXPECT_EQ(again, -1);
  EXPECT_EQ(krtGetUSBStatus(h), 0);
  int unknown = 5;
  EXPECT_NE(krtOpenDeviceBySerial(&unknown, 12345), 0);
  EXPECT_EQ(unknown, -1);
  // A second device opens alongside; after a close the serial opens again, on a new handle.
  int second = -1, reopened = -1;
  EXPECT_EQ(krtOpenDeviceBySerial(&second, 21000002), 0);
  EXPECT_TRUE(second >= 0 && second != h);
  EXPECT_EQ(krtCloseDevice(h), 0);
  EXPECT_EQ(krtOpenDeviceBySerial(&reopened, kSerial), 0);
  EXPECT_NE(reopened, h);
  EXPECT_EQ(krtCloseDevice(reopened), 0);
  EXPECT_EQ(krtCloseDevice(second), 0);
}

TEST(KrtSession, CallsOnAHandleThatIsNotOpenFailAndDoNothing) {
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_SPEED", "0"}}));
  const int closed = openDefault();
  EXPECT_EQ(krtCloseDevice(closed), 0);
  for (const int h : {closed, closed + 1}) {
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
    EXPECT_EQ(sum, -17);
    EXPECT_TRUE(serial == -7 && version == -7 && temperature == -7);
  }
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

// One settings call after a known value (`before`; the I/Q offset starts at 0, 0), whether it
// warns, and the value the recording shows afterwards. Frequency, level and timebase offset
// share one clamp, so each bound is a row but a non-finite value is tried twice only.
struct ClampRow {
  Setting setting;
  double before, a, b;
  bool warns;
  Json expected;
};

TEST(KrtSession, OutOfRangeSettingsAreClampedWithAWarning) {
  const std::vector<ClampRow> rows = {{Frequency, 2e9, 29e6, 0, true, 30e6},
                                      {Frequency, 2e9, 6.5e9, 0, true, 6e9},
                                      {Frequency, 2e9, kNaN, 0, true, 2e9},
                                      {Level, -20, -130, 0, true, -120.0},
                                      {Level, -20, 11, 0, true, 10.0},
                                      {Level, -20, -kInf, 0, true, -20.0},
                                      {Rate, 1e6, 54e6, 0, false, 54e6},
                                      {Rate, 1e6, 60e6, 0, true, 54e6},
                                      {Rate, 1e6, 0, 0, true, 1.0},
                                      {Rate, 1e6, kNaN, 0, true, 1e6},
                                      {IqOffset, 0, 1024, -1024, false, Json::array({1024, -1024})},
                                      {IqOffset, 0, 2000, 5, true, Json::array({1024, 5})},
                                      {IqOffset, 0, 5, -1025, true, Json::array({5, -1024})},
                                      {TimebaseOffset, 0, -1.5, 0, false, -1.5},
                                      {TimebaseOffset, 0.5, 3, 0, true, 2.0},
                                      {TimebaseOffset, 0.5, -2.5, 0, true, -2.0},
                                      {Timebase, 0, 1, 0, false, 1},
                                      {Timebase, 0, 2, 0, true, 1},
                                      {Timebase, 1, -1, 0, true, 0},
                                      {Tuning, 0, 5, 0, true, true},
                                      {RfOutput, 1, 0, 0, false, false}};
  const std::string prefix = scratch("clamp");
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_SPEED", "0"}, {"KRT40_SIM_RECORD", prefix}}));
  const int h = openDefault();
  const float sample[2] = {1.0f, 0.0f};
  std::vector<int> results;
  for (const ClampRow& row : rows) {
    EXPECT_EQ(set(h, row.setting, row.before, 0), 0);
    EXPECT_EQ(krtSubmitIQ(h, sample, 1), 0);  // sample 2k
    results.push_back(set(h, row.setting, row.a, row.b));
    EXPECT_EQ(krtSubmitIQ(h, sample, 1), 0);  // sample 2k + 1
  }
  EXPECT_EQ(krtCloseDevice(h), 0);
  const Json meta = readMeta(prefix);
  for (size_t k = 0; k < rows.size(); ++k) {
    const char* field = kFields[rows[k].setting];
    SCOPED_TRACE(std::string(field) + " row " + std::to_string(k));
    EXPECT_EQ(results[k] != 0, rows[k].warns);
    EXPECT_EQ(captureAt(meta, static_cast<long long>(2 * k + 1))[field], rows[k].expected);
  }
}

// A malformed variable: one line on standard error naming it, and the default in force.
struct MalformedRow {
  const char* name;
  const char* value;
  std::function<void()> behaviour;  // checks the default, may be empty
};

void PrintTo(const MalformedRow& row, std::ostream* os) { *os << row.name << '=' << row.value; }

class KrtMalformedVariable : public ::testing::TestWithParam<MalformedRow> {};

TEST_P(KrtMalformedVariable, FallsBackToTheDefault) {
  ASSERT_TRUE(useEnvironment({{GetParam().name, GetParam().value}}));
  ::testing::internal::CaptureStderr();
  krtGetAPIVersion();  // the first call reads the configuration
  const std::string err = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
  EXPECT_NE(err.find(GetParam().name), std::string::npos) << err;
  if (GetParam().behaviour) GetParam().behaviour();
}

INSTANTIATE_TEST_SUITE_P(
    Rows, KrtMalformedVariable,
    ::testing::Values(MalformedRow{"KRT40_SIM_DEVICES", "12,abc",
                                   [] {
                                     int serials[8] = {0};
                                     int count = 8;
                                     EXPECT_EQ(krtGetDeviceList(serials, &count), 0);
                                     EXPECT_TRUE(count == 1 && serials[0] == kSerial);
                                   }},
                      MalformedRow{"KRT40_SIM_OPEN_MS", "soon", {}},
                      MalformedRow{"KRT40_SIM_SPEED", "-1", {}},
                      MalformedRow{"KRT40_SIM_QUEUE_MS", "0", {}},
                      MalformedRow{"KRT40_SIM_RECORD_MAX", "1.5", {}},
                      MalformedRow{"KRT40_SIM_FAIL_AFTER_MS", "later", {}},
                      // Without a fixed temperature the device warms up from 28 degrees C
                      // towards 45.
                      MalformedRow{"KRT40_SIM_TEMPERATURE", "hot", [] {
                                     const int h = openDefault();
                                     float first = 0, later = 0;
                                     EXPECT_EQ(krtReadTemperature(h, &first), 0);
                                     sleepSeconds(0.2);
                                     EXPECT_EQ(krtReadTemperature(h, &later), 0);
                                     EXPECT_TRUE(first >= 28 && first < 28.5) << first;
                                     EXPECT_TRUE(later > first && later < 45) << later;
                                     EXPECT_EQ(krtCloseDevice(h), 0);
                                   }}));

}  // namespace

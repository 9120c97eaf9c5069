// SPDX-License-Identifier: MIT
// Unit parsing and display formats against tables of inputs and expected results.
#include "widgets/unit_format.h"

#include <gtest/gtest.h>

namespace {

struct ParseCase {
  const char* text;
  double current;
  double expected;
  bool ok;
};

TEST(UnitFormat, ParseFrequency) {
  const ParseCase cases[] = {
      // A bare number takes the unit in which the current value is shown.
      {"2", 1e6, 2e6, true},
      {"2", 500, 2, true},
      {"2", 999.999, 2, true},
      {"2", 1e3, 2e3, true},
      {"2", 1e9, 2e9, true},
      {"2", -1e6, 2, true},
      // Words and spellings; "m" is mega here.
      {"1.5 GHz", 0, 1.5e9, true},
      {"1.5ghz", 0, 1.5e9, true},
      {"1.5G", 0, 1.5e9, true},
      {"1500m", 0, 1.5e9, true},
      {" 10 K h ", 0, 1e4, true},
      {"10hz", 1e9, 10, true},
      {"-1 MHz", 0, -1e6, true},
      {".5mhz", 0, 5e5, true},
      // Every copy of the number is removed, not only the first.
      {"1m1", 0, 1e6, true},
      // Refused: scientific notation, no number, unknown or missing word.
      {"1e6", 0, 0, false},
      {"abc", 1e9, 0, false},
      {"", 1e9, 0, false},
      {"5 s", 0, 0, false},
      {"5 thz", 0, 0, false},
      {"5-", 0, 0, false},
      {"1.", 0, 0, false},
  };
  for (const ParseCase& c : cases) {
    bool ok = !c.ok;
    EXPECT_DOUBLE_EQ(parseFrequency(c.text, c.current, &ok), c.expected) << c.text;
    EXPECT_EQ(ok, c.ok) << c.text;
  }
}

TEST(UnitFormat, ParseTime) {
  const ParseCase cases[] = {
      {"2", 0.0005, 2e-6, true}, {"2", 0.001, 2e-3, true}, {"2", 0.999, 2e-3, true},
      {"2", 1.0, 2, true},       {"5 ms", 1, 5e-3, true},  {"5m", 1, 5e-3, true},
      {"5 us", 1, 5e-6, true},   {"5U", 1, 5e-6, true},    {"3 s", 0, 3, true},
      {"3sec", 0, 3, true},      {"1 min", 1, 0, false},   {"1e3", 1, 0, false},
      {"5 khz", 1, 0, false},    {"ms", 1, 0, false},
  };
  for (const ParseCase& c : cases) {
    bool ok = !c.ok;
    EXPECT_DOUBLE_EQ(parseTime(c.text, c.current, &ok), c.expected) << c.text;
    EXPECT_EQ(ok, c.ok) << c.text;
  }
}

struct FormatCase {
  double value;
  const char* expected;
};

TEST(UnitFormat, FormatFrequency) {
  const FormatCase cases[] = {
      {0, "0.000000 Hz"},         {999.5, "999.500000 Hz"}, {1e3, "1.000000 kHz"},
      {999999, "999.999000 kHz"}, {1e6, "1.000000 MHz"},    {1e9, "1.000000 GHz"},
      {6e9, "6.000000 GHz"},      {-1e6, "-1.000000 MHz"},  {-500, "-500.000000 Hz"},
  };
  for (const FormatCase& c : cases) EXPECT_EQ(formatFrequency(c.value), c.expected);
}

TEST(UnitFormat, FormatTimeAndDuration) {
  const FormatCase times[] = {
      {0, "0.000 us"},      {0.0005, "500.000 us"}, {0.001, "1.000 ms"},
      {0.25, "250.000 ms"}, {1, "1.000 s"},         {120, "120.000 s"},
  };
  for (const FormatCase& c : times) EXPECT_EQ(formatTime(c.value), c.expected);

  const FormatCase durations[] = {
      {0.0002, "0.000 us"},  {0.5, "0.500 ms"},     {1, "1.000 seconds"},  {59.5, "59.500 seconds"},
      {60, "1.000 minutes"}, {90, "1.500 minutes"}, {3600, "1.000 hours"}, {5400, "1.500 hours"},
  };
  for (const FormatCase& c : durations) EXPECT_EQ(formatDuration(c.value), c.expected);
}

TEST(UnitFormat, FormatCount) {
  const struct {
    qint64 value;
    const char* expected;
  } cases[] = {
      {0, "0"},           {999, "999"},       {1000, "1.00k"},       {123456, "123.46k"},
      {1000000, "1.00M"}, {2500000, "2.50M"}, {1000000000, "1.00G"}, {5000000000LL, "5.00G"},
  };
  for (const auto& c : cases) EXPECT_EQ(formatCount(c.value), c.expected);
}

}  // namespace

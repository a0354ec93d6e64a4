// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ProfileTrace.h"

#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Apps/Value/ProfileTesting.h"

namespace {

/// The complete events of a trace, by name.
std::map<std::string, nlohmann::json> GetSpans(const ProfileTrace& trace) {
  std::map<std::string, nlohmann::json> spans;
  const auto events = nlohmann::json::parse(trace.ToText())["traceEvents"];
  for (const auto& event : events) {
    if (event["ph"] == "X") spans[event["name"]] = event;
  }
  return spans;
}

TEST(ProfileTrace, TimesAreMicrosecondsFromTheStart) {
  ProfileTrace trace(MakeSpan(4, 4).begin, "value run g.json");
  trace.Add(MakeRun("g.json"), 1);
  const auto spans = GetSpans(trace);
  ASSERT_EQ(spans.size(), 8U);
  EXPECT_EQ(spans.at("g.json")["ts"], 6000.0);
  EXPECT_EQ(spans.at("g.json")["dur"], 100000.0);
  EXPECT_EQ(spans.at("height")["ts"], 16000.0);
  EXPECT_EQ(spans.at("height")["dur"], 30000.0);
  EXPECT_EQ(spans.at("open")["dur"], 10000.0);
  EXPECT_EQ(spans.at("decode")["ts"], 26000.0);
  EXPECT_EQ(spans.at("write raised.image")["ts"], 66000.0);
  EXPECT_EQ(spans.at("save")["ts"], 86000.0);
}

TEST(ProfileTrace, ArgumentsTellFilesSizesAndBytes) {
  ProfileTrace trace({}, "value");
  trace.Add(MakeRun("g.json"), 1);
  const auto spans = GetSpans(trace);
  EXPECT_EQ(
      spans.at("raised")["args"],
      nlohmann::json::parse(R"({"type": "Value Add", "bytes_read": 4000, "bytes_made": 4000, "size": [40, 25]})"));
  EXPECT_EQ(spans.at("decode")["args"],
            nlohmann::json::parse(R"({"file": "a.exr", "file_bytes": 1500, "sample_bytes": 4000})"));
  EXPECT_EQ(spans.at("save")["args"], nlohmann::json::parse(R"({"file": "b.exr", "file_bytes": 900})"));
  EXPECT_EQ(spans.at("write raised.image")["args"], nlohmann::json::parse(R"({"file": "b.exr"})"));
}

TEST(ProfileTrace, EveryJobHasARowWithAName) {
  ProfileTrace trace({}, "value run g.json");
  trace.Add(MakeRun("a.exr"), 1);
  trace.Add(MakeRun("b.exr"), 2);
  std::map<int, std::string> names;
  const auto events = nlohmann::json::parse(trace.ToText())["traceEvents"];
  for (const auto& event : events) {
    if (event["ph"] == "M") names[event["tid"]] = event["args"]["name"];
  }
  EXPECT_EQ(names, (std::map<int, std::string>{{0, "value run g.json"}, {1, "job 1"}, {2, "job 2"}}));
  EXPECT_EQ(GetSpans(trace).at("b.exr")["tid"], 2);
}

TEST(ProfileTrace, WhatIsTooMuchIsCounted) {
  ProfileTrace trace({}, "value", 5);
  trace.Add(MakeRun("a"), 1);
  EXPECT_EQ(trace.GetNumLeftOut(), 3U);
  EXPECT_EQ(GetSpans(trace).size(), 5U);
}

TEST(ProfileTrace, NamesThatAreNoUtf8StillMakeATraceThatCanBeRead) {
  ProfileTrace trace({}, "value \xff");
  trace.Add(MakeRun("quote \" and \n \xc0"), 1);
  EXPECT_TRUE(GetSpans(trace).contains("quote \" and \n \ufffd"));
}

TEST(ProfileTrace, WithoutRunsItIsEmptyButForItsName) {
  const auto trace = nlohmann::json::parse(ProfileTrace({}, "value").ToText());
  EXPECT_EQ(trace["traceEvents"].size(), 1U);
}

}  // namespace

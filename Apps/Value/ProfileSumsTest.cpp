// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ProfileSums.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "Apps/Value/ProfileTesting.h"

namespace {

/// Moves 1 MB in a second on two threads.
const CopySpeed kSlowCopy{1e6, 2, 64};

TEST(ProfileSums, SpeedCountsWhatANodeReadsAndMakesAgainstTheCopy) {
  ProfileSums sums;
  sums.Add(MakeRun("a"));
  const auto json = sums.ToJson(kSlowCopy, 0.25);
  const auto& reader = json["nodes"][0];
  EXPECT_EQ(reader["id"], "height");
  EXPECT_EQ(reader["type"], "Image Reader");
  EXPECT_DOUBLE_EQ(reader["seconds"], 0.03);
  EXPECT_EQ(reader["file_bytes"], 1500);
  EXPECT_DOUBLE_EQ(reader["open_seconds"], 0.01);
  EXPECT_DOUBLE_EQ(reader["decode_seconds"], 0.02);
  const auto& node = json["nodes"][1];
  EXPECT_EQ(node["id"], "raised");
  // 4000 bytes read and 4000 made in 10 ms.
  EXPECT_DOUBLE_EQ(node["bytes_per_second"], 8e5);
  EXPECT_DOUBLE_EQ(node["copy_share"], 0.8);
  EXPECT_FALSE(node.contains("file_bytes"));
  EXPECT_DOUBLE_EQ(json["seconds_before"], 0.25);
}

TEST(ProfileSums, TimesOfNodesAndWritesAndTheRestAreTheWholeRun) {
  ProfileSums sums;
  sums.Add(MakeRun("a"));
  const auto json = sums.ToJson(kSlowCopy, 0.0);
  EXPECT_DOUBLE_EQ(json["seconds"], 0.1);
  // 100 ms without 30 and 10 of the nodes and 30 of the file.
  EXPECT_NEAR(json["other_seconds"].get<double>(), 0.03, 1e-12);
  const auto& output = json["outputs"][0];
  EXPECT_EQ(output["from"], "raised.image");
  EXPECT_DOUBLE_EQ(output["seconds"], 0.03);
  EXPECT_EQ(output["bytes_read"], 4000);
  EXPECT_EQ(output["file_bytes"], 900);
  EXPECT_DOUBLE_EQ(output["encode_seconds"], 0.02);
  EXPECT_DOUBLE_EQ(output["save_seconds"], 0.01);
}

TEST(ProfileSums, RunsAreAddedUpByNodeAndOverlapInWallTime) {
  ProfileSums sums;
  sums.Add(MakeRun("a"));
  RunRecord later = MakeRun("b");
  later.span = MakeSpan(60, 160);
  sums.Add(later);
  const auto json = sums.ToJson(kSlowCopy, 0.0);
  EXPECT_EQ(json["runs"], 2);
  EXPECT_EQ(json["nodes"].size(), 2U);
  EXPECT_EQ(json["nodes"][0]["evaluations"], 2);
  EXPECT_DOUBLE_EQ(json["nodes"][0]["seconds"], 0.06);
  EXPECT_EQ(json["nodes"][0]["file_bytes"], 3000);
  EXPECT_EQ(json["outputs"][0]["writes"], 2);
  EXPECT_DOUBLE_EQ(json["seconds"], 0.2);
  EXPECT_DOUBLE_EQ(json["wall_seconds"], 0.15);
}

TEST(ProfileSums, WithoutAMeasuredCopyNothingIsSaidOfItsShare) {
  ProfileSums sums;
  sums.Add(MakeRun("a"));
  const CopySpeed unknown;
  const auto json = sums.ToJson(unknown, 0.0);
  EXPECT_TRUE(json["copy_bytes_per_second"].is_null());
  EXPECT_FALSE(json["nodes"][0].contains("copy_share"));
  EXPECT_NE(sums.ToText(unknown, 0.0).find("no memory to measure"), std::string::npos);
}

TEST(ProfileSums, TheTableBeginsWithWhatTookLongest) {
  ProfileSums sums;
  RunRecord run = MakeRun("a");
  run.writes[0].span.end = MakeSpan(0, 105).end;
  sums.Add(run);
  const std::string text = sums.ToText(kSlowCopy, 0.25);
  const std::size_t write = text.find("   35.0 ms    35%    4.0 kB");
  const std::size_t reader = text.find("   30.0 ms    30%              4.0 kB");
  const std::size_t node =
      text.find("   10.0 ms    10%    4.0 kB    4.0 kB   0.00 GB/s      80%  raised (Value Add)\n");
  ASSERT_NE(write, std::string::npos) << text;
  ASSERT_NE(reader, std::string::npos) << text;
  ASSERT_NE(node, std::string::npos) << text;
  EXPECT_LT(write, reader);
  EXPECT_LT(reader, node);
  EXPECT_NE(text.find("height (Image Reader): 1.5 kB, opened in 10.0 ms, decoded in 20.0 ms\n"), std::string::npos);
  EXPECT_NE(text.find("output raised.image: 900 B, encoded in 20.0 ms, saved in 10.0 ms\n"), std::string::npos);
  EXPECT_NE(text.find("   25.0 ms    25%                                           everything else\n"),
            std::string::npos);
}

TEST(ProfileSums, ALongTableEndsWithTheSumOfWhatIsShort) {
  RunRecord run;
  run.span = MakeSpan(0, 100);
  for (int i = 0; i < 50; ++i) {
    run.nodes.push_back({"n" + std::to_string(i), "Value Add", MakeSpan(i, i + 1), 0, 0, 0, 0, {}});
  }
  ProfileSums sums;
  sums.Add(run);
  const std::string text = sums.ToText(kSlowCopy, 0.0);
  EXPECT_NE(
      text.find("   10.0 ms    10%                                           10 more, each shorter; --json has all"),
      std::string::npos)
      << text;
  EXPECT_EQ(sums.ToJson(kSlowCopy, 0.0)["nodes"].size(), 50U);
}

TEST(ProfileSums, WithoutRunsThereIsNoTable) {
  EXPECT_EQ(ProfileSums().ToText(kSlowCopy, 0.0), "Profile: nothing was run\n");
}

TEST(ProfileCopy, FindsASpeedAndTheThreadsThatItHolds) {
  const CopySpeed speed = MeasureCopySpeed();
  EXPECT_GT(speed.bytes_per_second, 0.0);
  EXPECT_GE(speed.threads, 1U);
  EXPECT_EQ(speed.block_bytes, std::size_t{64} << 20);
}

}  // namespace

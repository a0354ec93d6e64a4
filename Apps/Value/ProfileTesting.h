// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Apps/Value/ProfileRecord.h"

/// A stretch of whole milliseconds after the start of the clock.
inline ProfileSpan MakeSpan(int begin_ms, int end_ms) {
  const ProfileSpan::Clock::time_point start;
  return {start + std::chrono::milliseconds(begin_ms), start + std::chrono::milliseconds(end_ms)};
}

/// A run from 10 to 110 ms: a reader (20 to 50, opened until 30), a node (50 to 60) and a written file (70 to 100,
/// encoded until 90).
inline RunRecord MakeRun(const std::string& name) {
  using ScEng::FileWork;
  RunRecord run;
  run.name = name;
  run.span = MakeSpan(10, 110);
  NodeStep reader{"height", "Image Reader", MakeSpan(20, 50), 0, 4000, 40, 25, {}};
  reader.files.push_back({FileWork::kOpen, "a.exr", MakeSpan(20, 30), 1500, 0});
  reader.files.push_back({FileWork::kDecode, "a.exr", MakeSpan(30, 50), 1500, 4000});
  run.nodes.push_back(reader);
  run.nodes.push_back({"raised", "Value Add", MakeSpan(50, 60), 4000, 4000, 40, 25, {}});
  WriteStep write{"raised.image", "b.exr", MakeSpan(70, 100), {}};
  write.stages.push_back({FileWork::kEncode, "b.exr", MakeSpan(70, 90), 0, 4000});
  write.stages.push_back({FileWork::kSave, "b.exr", MakeSpan(90, 100), 900, 0});
  run.writes.push_back(write);
  return run;
}

// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/SafeReport.h"

#include <vector>

#include "Apps/Value/SafeText.h"

namespace {

constexpr std::size_t kLongestName = 80;

void MakeSafe(std::vector<ScEng::CheckFinding>& findings) {
  for (ScEng::CheckFinding& finding : findings) {
    finding.node = MakeSafeName(finding.node);
    finding.text = EscapeLine(finding.text, kLongestFinding);
  }
}

}  // namespace

std::string MakeSafeName(const std::string& name) { return EscapeLine(name, kLongestName); }

ScEng::CheckReport MakeSafe(ScEng::CheckReport report) {
  MakeSafe(report.failures);
  MakeSafe(report.skips);
  return report;
}

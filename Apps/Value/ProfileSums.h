// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Apps/Value/ProfileCopy.h"
#include "Apps/Value/ProfileRecord.h"

/// What all runs of a command took together, by node and by output.
class ProfileSums {
 public:
  void Add(const RunRecord& record);

  /// A table, longest time first. `before` are the seconds from the start of the program to the first run.
  [[nodiscard]] std::string ToText(const CopySpeed& copy, double before) const;
  [[nodiscard]] nlohmann::ordered_json ToJson(const CopySpeed& copy, double before) const;

 private:
  struct Sum {
    std::string id;
    std::string type;
    std::size_t times = 0;
    double seconds = 0.0;
    std::uintmax_t bytes_read = 0;
    std::uintmax_t bytes_made = 0;
    std::uintmax_t file_bytes = 0;
    /// By stage of `ScEng::FileWork`.
    std::array<double, 4> stage_seconds{};

    void AddStages(const std::vector<FileRecord>& stages);
    [[nodiscard]] double GetSpeed() const;
    [[nodiscard]] std::string Describe() const;
    [[nodiscard]] std::string DescribeStages() const;
    void AddStagesTo(nlohmann::ordered_json& json) const;
  };
  using Sums = std::map<std::string, Sum>;

  static std::vector<const Sum*> Sort(const Sums& sums);
  [[nodiscard]] double GetOtherSeconds() const;

  Sums nodes_;
  Sums writes_;
  std::size_t runs_ = 0;
  /// Of all runs, one after the other.
  double seconds_ = 0.0;
  ProfileSpan span_;
};

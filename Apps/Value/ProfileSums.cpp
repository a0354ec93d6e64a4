// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ProfileSums.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace {

/// Of the table: more than a person reads.
constexpr std::size_t kMostRows = 40;

constexpr std::array<const char*, 4> kStageWords{"opened", "decoded", "encoded", "saved"};

std::string Format(const char* format, double number) {
  char text[64];
  const int length = std::snprintf(text, sizeof(text), format, number);
  return {text, static_cast<std::size_t>(length)};
}

std::string FormatTime(double seconds) {
  if (seconds >= 10.0) return Format("%.2f s", seconds);
  return Format(seconds < 0.01 ? "%.2f ms" : "%.1f ms", seconds * 1e3);
}

std::string FormatBytes(std::uintmax_t bytes) {
  const auto number = static_cast<double>(bytes);
  if (bytes < 1000) return Format("%.0f B", number);
  if (bytes < 1000000) return Format("%.1f kB", number / 1e3);
  return bytes < 1000000000 ? Format("%.1f MB", number / 1e6) : Format("%.2f GB", number / 1e9);
}

std::string FormatPercent(double share) { return Format("%.0f%%", share * 100.0); }

std::string Right(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string CountOf(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

/// One line of the table; empty fields stay blank.
std::string MakeRow(const std::array<std::string, 6>& fields, const std::string& what) {
  constexpr std::array<std::size_t, 6> kWidths{11, 7, 10, 10, 12, 9};
  std::string row;
  for (std::size_t i = 0; i < fields.size(); ++i) row += Right(fields[i], kWidths[i]);
  return row + "  " + what + "\n";
}

}  // namespace

void ProfileSums::Sum::AddStages(const std::vector<FileRecord>& stages) {
  for (const FileRecord& stage : stages) {
    stage_seconds[static_cast<std::size_t>(stage.work)] += stage.span.GetSeconds();
    const bool is_whole = stage.work == ScEng::FileWork::kDecode || stage.work == ScEng::FileWork::kSave;
    if (is_whole) file_bytes += stage.file_bytes;
  }
}

double ProfileSums::Sum::GetSpeed() const {
  return seconds > 0.0 ? static_cast<double>(bytes_read + bytes_made) / seconds : 0.0;
}

std::string ProfileSums::Sum::DescribeStages() const {
  std::string text;
  for (std::size_t i = 0; i < stage_seconds.size(); ++i) {
    if (stage_seconds[i] <= 0.0) continue;
    text += (text.empty() ? "" : ", ") + std::string(kStageWords[i]) + " in " + FormatTime(stage_seconds[i]);
  }
  return text.empty() ? text : FormatBytes(file_bytes) + ", " + text;
}

std::string ProfileSums::Sum::Describe() const {
  std::string text = id;
  if (!type.empty() && type != id) text += " (" + type + ")";
  if (times > 1) text += ", " + std::to_string(times) + " times";
  const std::string stages = DescribeStages();
  return stages.empty() ? text : text + ": " + stages;
}

void ProfileSums::Sum::AddStagesTo(nlohmann::ordered_json& json) const {
  if (std::all_of(stage_seconds.begin(), stage_seconds.end(), [](double stage) { return stage <= 0.0; })) return;
  json["file_bytes"] = file_bytes;
  for (std::size_t i = 0; i < stage_seconds.size(); ++i) {
    if (stage_seconds[i] <= 0.0) continue;
    json[GetName(static_cast<ScEng::FileWork>(i)) + std::string("_seconds")] = stage_seconds[i];
  }
}

void ProfileSums::Add(const RunRecord& record) {
  for (const NodeStep& step : record.nodes) {
    Sum& sum = nodes_[step.id];
    sum.id = step.id;
    sum.type = step.type;
    ++sum.times;
    sum.seconds += step.span.GetSeconds();
    sum.bytes_read += step.bytes_read;
    sum.bytes_made += step.bytes_made;
    sum.AddStages(step.files);
  }
  for (const WriteStep& step : record.writes) {
    Sum& sum = writes_[step.sources];
    sum.id = step.sources;
    ++sum.times;
    sum.seconds += step.span.GetSeconds();
    for (const FileRecord& stage : step.stages) sum.bytes_read += stage.sample_bytes;
    sum.AddStages(step.stages);
  }
  span_.begin = runs_ == 0 ? record.span.begin : std::min(span_.begin, record.span.begin);
  span_.end = runs_ == 0 ? record.span.end : std::max(span_.end, record.span.end);
  ++runs_;
  seconds_ += record.span.GetSeconds();
}

std::vector<const ProfileSums::Sum*> ProfileSums::Sort(const Sums& sums) {
  std::vector<const Sum*> sorted;
  for (const auto& [id, sum] : sums) sorted.push_back(&sum);
  std::stable_sort(sorted.begin(), sorted.end(), [](const Sum* a, const Sum* b) { return a->seconds > b->seconds; });
  return sorted;
}

double ProfileSums::GetOtherSeconds() const {
  double seconds = seconds_;
  for (const Sums* sums : {&nodes_, &writes_}) {
    for (const auto& [id, sum] : *sums) seconds -= sum.seconds;
  }
  // Rounding in the sums of many short times.
  return std::max(seconds, 0.0);
}

std::string ProfileSums::ToText(const CopySpeed& copy, double before) const {
  if (runs_ == 0) return "Profile: nothing was run\n";
  std::string text = "Profile: " + CountOf(nodes_.size(), "node", "nodes") + " on " +
                     CountOf(copy.threads, "thread", "threads") + " in " + FormatTime(span_.GetSeconds());
  if (runs_ > 1) text += ", " + std::to_string(runs_) + " runs of " + FormatTime(seconds_) + " together";
  text += "; " + FormatTime(before) + " before that to load libraries and document\n\n";
  text += MakeRow({"time", "share", "read", "made", "speed", "of copy"}, "what");
  struct Row {
    const Sum* sum;
    std::string what;
  };
  const auto share_of = [&](double seconds) { return FormatPercent(seconds_ > 0.0 ? seconds / seconds_ : 0.0); };

  std::vector<Row> rows;
  for (const auto& [id, sum] : nodes_) rows.push_back({&sum, sum.Describe()});
  for (const auto& [id, sum] : writes_) {
    rows.push_back({&sum, (id.empty() ? "files of writers" : "output ") + sum.Describe()});
  }
  std::stable_sort(rows.begin(), rows.end(),
                   [](const Row& a, const Row& b) { return a.sum->seconds > b.sum->seconds; });
  const std::size_t shown = rows.size() <= kMostRows + 1 ? rows.size() : kMostRows;
  for (std::size_t i = 0; i < shown; ++i) {
    const Sum& sum = *rows[i].sum;
    const bool moves = sum.bytes_read + sum.bytes_made > 0;
    const double of_copy = copy.bytes_per_second > 0.0 ? sum.GetSpeed() / copy.bytes_per_second : 0.0;
    text += MakeRow(
        {FormatTime(sum.seconds), share_of(sum.seconds), sum.bytes_read > 0 ? FormatBytes(sum.bytes_read) : "",
         sum.bytes_made > 0 ? FormatBytes(sum.bytes_made) : "", moves ? Format("%.2f GB/s", sum.GetSpeed() / 1e9) : "",
         moves && of_copy > 0.0 ? FormatPercent(of_copy) : ""},
        rows[i].what);
  }
  double further = 0.0;
  for (std::size_t i = shown; i < rows.size(); ++i) further += rows[i].sum->seconds;
  if (shown < rows.size()) {
    text += MakeRow({FormatTime(further), share_of(further), "", "", "", ""},
                    std::to_string(rows.size() - shown) + " more, each shorter; --json has all");
  }
  text += MakeRow({FormatTime(GetOtherSeconds()), share_of(GetOtherSeconds()), "", "", "", ""}, "everything else");
  if (copy.bytes_per_second <= 0.0) return text + "\nThere was no memory to measure a plain copy.\n";
  return text + "\nA plain copy of " + FormatBytes(copy.block_bytes) + " on " +
         CountOf(copy.threads, "thread", "threads") + " moves " + Format("%.1f GB/s", copy.bytes_per_second / 1e9) +
         " here, read and written. \"of copy\" is the share\nof that; small images stay in the caches and may go "
         "beyond it.\n";
}

nlohmann::ordered_json ProfileSums::ToJson(const CopySpeed& copy, double before) const {
  nlohmann::ordered_json json;
  json["runs"] = runs_;
  json["threads"] = copy.threads;
  json["wall_seconds"] = span_.GetSeconds();
  json["seconds"] = seconds_;
  json["other_seconds"] = GetOtherSeconds();
  json["seconds_before"] = before;
  json["copy_bytes"] = copy.block_bytes;
  json["copy_bytes_per_second"] =
      copy.bytes_per_second > 0.0 ? nlohmann::ordered_json(copy.bytes_per_second) : nlohmann::ordered_json(nullptr);
  json["nodes"] = nlohmann::ordered_json::array();
  for (const Sum* sum : Sort(nodes_)) {
    nlohmann::ordered_json node{{"id", sum->id},
                                {"type", sum->type},
                                {"evaluations", sum->times},
                                {"seconds", sum->seconds},
                                {"bytes_read", sum->bytes_read},
                                {"bytes_made", sum->bytes_made},
                                {"bytes_per_second", sum->GetSpeed()}};
    if (copy.bytes_per_second > 0.0) node["copy_share"] = sum->GetSpeed() / copy.bytes_per_second;
    sum->AddStagesTo(node);
    json["nodes"].push_back(std::move(node));
  }
  json["outputs"] = nlohmann::ordered_json::array();
  for (const Sum* sum : Sort(writes_)) {
    nlohmann::ordered_json output{
        {"from", sum->id}, {"writes", sum->times}, {"seconds", sum->seconds}, {"bytes_read", sum->bytes_read}};
    sum->AddStagesTo(output);
    json["outputs"].push_back(std::move(output));
  }
  return json;
}

// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>

#include "Apps/Value/Common.h"
#include "Apps/Value/FileFacts.h"
#include "Host/Files/ImageFile.h"
#include "Host/Image/Image.h"

namespace {

/// The figures of all samples of an image, every channel alike. Range, mean, deviation and histogram are those of the
/// finite samples.
struct Figures {
  ScEng::SampleRange measured;
  double mean = 0.0;
  double deviation = 0.0;
  std::uint64_t finite = 0;
  std::uint64_t nan = 0;
  std::uint64_t infinite = 0;
  std::vector<std::uint64_t> histogram;
};

Figures Measure(const Image& image, std::size_t bins) {
  Figures figures;
  const float* samples = image.GetConstArray();
  const std::size_t count = image.GetNumSamples();
  figures.measured = ScEng::MeasureFiniteRange(samples, count);
  if (figures.measured.IsEmpty()) figures.measured = {0.0F, 0.0F};
  const double low = figures.measured.low;
  const double span = static_cast<double>(figures.measured.high) - low;
  figures.histogram.assign(bins, 0);

  // Sums of differences from the lowest sample keep their digits where all samples are large and close together.
  double sum = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isnan(samples[i])) ++figures.nan;
    if (std::isinf(samples[i])) ++figures.infinite;
    if (!std::isfinite(samples[i])) continue;
    ++figures.finite;
    const double above = static_cast<double>(samples[i]) - low;
    sum += above;
    const double place = span > 0.0 ? above / span * static_cast<double>(bins) : 0.0;
    ++figures.histogram[std::min(bins - 1, static_cast<std::size_t>(place))];
  }
  if (figures.finite == 0) return figures;
  const double mean_above = sum / static_cast<double>(figures.finite);
  figures.mean = low + mean_above;
  double squares = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (!std::isfinite(samples[i])) continue;
    const double difference = static_cast<double>(samples[i]) - low - mean_above;
    squares += difference * difference;
  }
  figures.deviation = std::sqrt(squares / static_cast<double>(figures.finite));
  return figures;
}

std::string DrawHistogram(const Figures& figures) {
  constexpr std::size_t kWidest = 50;
  const std::uint64_t most =
      std::max<std::uint64_t>(1, *std::max_element(figures.histogram.begin(), figures.histogram.end()));
  const double low = figures.measured.low;
  const double span = static_cast<double>(figures.measured.high) - low;
  std::ostringstream text;
  for (std::size_t i = 0; i < figures.histogram.size(); ++i) {
    const double from = low + span * static_cast<double>(i) / static_cast<double>(figures.histogram.size());
    std::string label = FormatFloat(static_cast<float>(from));
    label.resize(std::max<std::size_t>(label.size(), 14), ' ');
    const auto length = static_cast<std::size_t>(static_cast<double>(figures.histogram[i]) / static_cast<double>(most) *
                                                 static_cast<double>(kWidest));
    text << "  " << label << " " << std::string(length, '#') << (length > 0 ? " " : "") << figures.histogram[i] << "\n";
  }
  return text.str();
}

class StatsCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("stats", "Prints the figures of an image file");
    sub->add_option("FILE", file_, "The image")->required();
    sub->add_option("--bins", bins_, "Bars of the histogram (default: 16)")
        ->type_name("N")
        ->check(CLI::Range(1, 65536));
    sub->add_option("--part", options_.part, "The part of the file: its name, or an index from 0")->type_name("PART");
    sub->add_option("--layer", options_.layer, "The layer: diffuse of a channel diffuse.R")->type_name("LAYER");
    sub->add_option("--channels", options_.channels, "One to four channels with commas, as the file names them")
        ->type_name("NAMES");
    sub->add_option("--samples", samples_, "What integers become: auto, unit (divided by their largest) or stored")
        ->type_name("WORD")
        ->check(CLI::IsMember({"auto", "unit", "stored"}));
    sub->footer("Examples:\n  value stats terrain.exr\n  value stats terrain.exr --bins 64 --json");
    return sub;
  }

  ExitCode Run() override {
    Status status;
    std::vector<std::string> notes;
    if (samples_ == "unit") options_.scale = ScEng::SampleScale::kUnit;
    if (samples_ == "stored") options_.scale = ScEng::SampleScale::kStored;
    std::optional<ScEng::FileDescription> file;
    const auto image = ScEng::ReadImageFile(ScEng::MakePath(file_), options_, status, notes, &file);
    if (!image) {
      if (!file) return Fail(ExitCode::kFile, status.GetMessage());
      // What there is in the file tells what to ask for.
      reporter_.Print(file_ + "\n" + DescribeFile(*file));
      nlohmann::ordered_json answer = {{"file", file_}};
      answer.update(FileToJson(*file));
      return Fail(ExitCode::kFile, status.GetMessage(), std::move(answer));
    }
    reporter_.Notes(notes);
    const Figures figures = Measure(*image, bins_);
    reporter_.Print(Describe(*image, figures, *file));
    nlohmann::ordered_json answer = ToAnswer(*image, figures);
    answer.update(FileToJson(*file));
    reporter_.Finish(answer);
    return ExitCode::kDone;
  }

 private:
  using Status = ScEng::Status;

  std::string Describe(const Image& image, const Figures& figures, const ScEng::FileDescription& file) const {
    std::ostringstream text;
    text << file_ << "\n"
         << "  size        " << image.GetSizeX() << " x " << image.GetSizeY() << "\n"
         << "  mode        " << ColorMode::GetName(image.GetColorMode()) << " (" << image.GetColorMode() << "), "
         << image.GetNumChannels() << (image.GetNumChannels() == 1 ? " channel" : " channels") << "\n"
         << "  pin         " << image.GetPinX() << ", " << image.GetPinY() << "   pivot "
         << FormatFloat(image.GetPivotX()) << ", " << FormatFloat(image.GetPivotY()) << "\n"
         << "  declared    " << FormatFloat(image.GetValueLow()) << " to " << FormatFloat(image.GetValueHigh()) << "\n"
         << "  measured    " << FormatFloat(figures.measured.low) << " to " << FormatFloat(figures.measured.high)
         << "\n"
         << "  mean        " << FormatFloat(static_cast<float>(figures.mean)) << "\n"
         << "  deviation   " << FormatFloat(static_cast<float>(figures.deviation)) << "\n"
         << "  NaN         " << figures.nan << "\n"
         << "  infinite    " << figures.infinite << "\n"
         << "  histogram of the finite samples, each bar from\n"
         << DrawHistogram(figures) << "The file\n"
         << DescribeFile(file);
    return text.str();
  }

  nlohmann::ordered_json ToAnswer(const Image& image, const Figures& figures) const {
    nlohmann::ordered_json answer;
    answer["file"] = file_;
    answer["width"] = image.GetSizeX();
    answer["height"] = image.GetSizeY();
    answer["mode"] = image.GetColorMode();
    answer["mode_name"] = ColorMode::GetName(image.GetColorMode());
    answer["channels"] = image.GetNumChannels();
    answer["pin"] = {image.GetPinX(), image.GetPinY()};
    answer["pivot"] = {ToJson(static_cast<double>(image.GetPivotX())), ToJson(static_cast<double>(image.GetPivotY()))};
    answer["declared"] = {ToJson(static_cast<double>(image.GetValueLow())),
                          ToJson(static_cast<double>(image.GetValueHigh()))};
    answer["measured"] = {ToJson(static_cast<double>(figures.measured.low)),
                          ToJson(static_cast<double>(figures.measured.high))};
    answer["mean"] = ToJson(figures.mean);
    answer["deviation"] = ToJson(figures.deviation);
    answer["nan"] = figures.nan;
    answer["infinite"] = figures.infinite;
    answer["histogram"] = figures.histogram;
    return answer;
  }

  std::string file_;
  std::size_t bins_ = 16;
  ScEng::ReadOptions options_;
  std::string samples_;
};

}  // namespace

std::unique_ptr<Command> MakeStatsCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<StatsCommand>(common, reporter);
}

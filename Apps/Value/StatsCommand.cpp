// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <sstream>

#include "Apps/Value/Common.h"
#include "Apps/Value/FileFacts.h"
#include "Apps/Value/ImageFigures.h"
#include "Apps/Value/Interrupt.h"
#include "Apps/Value/SafeText.h"
#include "Apps/Value/StandardInput.h"
#include "Host/Files/DecodeOptions.h"
#include "Host/Files/ImageFile.h"
#include "Host/Image/Image.h"
#include "Host/Tools/Guard.h"
#include "Host/Util/ParallelRows.h"

namespace {

/// Above the lines of `DescribeInShort`.
constexpr const char* kSummaryHead =
    "       size  mode         lowest      highest         mean      NaN      inf  file\n";

class StatsCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("stats", "Prints the figures of image files");
    sub->add_option("FILE", files_, "The images; - is standard input")->required();
    sub->add_flag("--summary", is_summary_, "A line for each file in place of all its figures");
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
    sub->footer(
        "Examples:\n"
        "  value stats terrain.exr\n"
        "  value stats terrain.exr --bins 64 --json\n"
        "  value stats --summary tiles/*.exr\n"
        "With --json and several files each file is a line of its own, and the last line counts them.");
    return sub;
  }

  ExitCode Run() override {
    if (samples_ == "unit") options_.scale = ScEng::SampleScale::kUnit;
    if (samples_ == "stored") options_.scale = ScEng::SampleScale::kStored;
    if (is_summary_) reporter_.Print(kSummaryHead);
    return HasMany() ? MeasureFiles() : MeasureFile(files_.front(), true);
  }

 private:
  using Status = ScEng::Status;

  [[nodiscard]] bool HasMany() const { return files_.size() > 1; }

  /// Goes through all files until a signal asks for the end.
  ExitCode MeasureFiles() {
    // Read by another thread where a file takes too long to wait for.
    std::atomic<std::size_t> measured = 0;
    std::atomic<std::size_t> failed = 0;
    ExitCode code = ExitCode::kDone;
    {
      Interrupt::Work interruptible([&] { FinishFiles(measured, failed); });
      ScEng::ExpectImageFiles(FindExpected(), ScEng::GetNumThreads() > 1 ? 1 : 0);
      for (std::size_t i = 0; i < files_.size() && !interruptible.GetCancellation().IsRequested(); ++i) {
        reporter_.Progress(files_[i], i, files_.size(), ProgressUnit::kFiles);
        const ExitCode own = MeasureFile(files_[i], i == 0);
        ++(own == ExitCode::kDone ? measured : failed);
        code = std::max(code, own);
      }
      ScEng::ExpectImageFiles({}, 0);
    }
    FinishFiles(measured, failed);
    const int signal = Interrupt::GetSignal();
    return signal != 0 ? static_cast<ExitCode>(128 + signal) : code;
  }

  void FinishFiles(std::size_t measured, std::size_t failed) {
    if (has_finished_.exchange(true)) return;
    nlohmann::ordered_json sum = {{"files", files_.size()}, {"measured", measured}, {"failed", failed}};
    const std::size_t left = files_.size() - measured - failed;
    if (Interrupt::GetSignal() != 0) {
      sum["left_out"] = left;
      reporter_.Error(std::to_string(measured) + " of " + std::to_string(files_.size()) + " measured, " +
                      (failed > 0 ? std::to_string(failed) + " failed, " : "") + std::to_string(left) + " left out");
    }
    reporter_.FinishLines(sum);
  }

  /// What will be read, beside standard input.
  [[nodiscard]] std::vector<std::filesystem::path> FindExpected() const {
    std::vector<std::filesystem::path> files;
    for (const std::string& file : files_) {
      if (file != kStandardStream) files.emplace_back(file);
    }
    return files;
  }

  /// Tells about one file as soon as it is measured.
  ExitCode MeasureFile(const std::string& name, bool is_first) {
    nlohmann::ordered_json answer = {{"file", name}};
    ExitCode code = ExitCode::kNodeError;
    try {
      code = MeasureFile(name, is_first, answer);
    } catch (...) {
      TellError((HasMany() ? name + ": " : "") + "an unexpected error: " + ScEng::DescribeHandledException(), answer);
    }
    if (HasMany()) {
      reporter_.AnswerLine(answer);
    } else {
      reporter_.Finish(answer);
    }
    return code;
  }

  ExitCode MeasureFile(const std::string& name, bool is_first, nlohmann::ordered_json& answer) {
    Status status;
    std::vector<std::string> notes;
    std::optional<ScEng::FileDescription> file;
    std::filesystem::path path;
    status = StandardInput::FindImage(name, path);
    if (status.IsError()) {
      TellError(status.GetMessage(), answer);
      return StandardInput::GetErrorCode();
    }
    const auto image = ScEng::ReadImageFile(path, options_, status, notes, &file);
    const std::string gap = is_first ? "" : "\n";
    if (!image) {
      // What there is in the file tells what to ask for.
      if (file && !is_summary_) reporter_.Print(gap + name + "\n" + DescribeFile(*file));
      if (file) answer.update(FileToJson(*file));
      TellError(status.GetMessage(), answer);
      return ExitCode::kFile;
    }
    TellNotes(name, notes, answer);
    const ImageFigures figures = MeasureFigures(*image, bins_);
    reporter_.Print(is_summary_ ? DescribeInShort(name, *image, figures)
                                : gap + Describe(name, *image, figures, *file));
    AddFigures(*image, figures, answer);
    answer.update(FileToJson(*file));
    return ExitCode::kDone;
  }

  void TellError(const std::string& text, nlohmann::ordered_json& answer) {
    reporter_.Error(text);
    if (!HasMany()) return;
    answer["error"] = EscapeLine(text);
  }

  /// Notes of reading do not name the file.
  void TellNotes(const std::string& name, const std::vector<std::string>& notes, nlohmann::ordered_json& answer) {
    if (!HasMany()) return reporter_.Notes(notes);
    for (const std::string& note : notes) {
      reporter_.NoteInPassing(name + ": " + note);
      answer["notes"].push_back(EscapeLine(note));
    }
  }

  static std::string DescribeInShort(const std::string& name, const Image& image, const ImageFigures& figures) {
    const std::string size = std::to_string(image.GetSizeX()) + " x " + std::to_string(image.GetSizeY());
    const auto show = [&](double number) {
      char text[32];
      std::snprintf(text, sizeof(text), "%.6g", number);
      return figures.finite == 0 ? std::string("-") : std::string(text);
    };
    char text[160];
    std::snprintf(text, sizeof(text), "%11s  %-6s  %11s  %11s  %11s  %7llu  %7llu  ", size.c_str(),
                  ColorMode::GetName(image.GetColorMode()), show(static_cast<double>(figures.measured.low)).c_str(),
                  show(static_cast<double>(figures.measured.high)).c_str(), show(figures.mean).c_str(),
                  static_cast<unsigned long long>(figures.nan), static_cast<unsigned long long>(figures.infinite));
    return text + name + "\n";
  }

  static std::string DescribeSamples(const ImageFigures& figures) {
    const std::string counts =
        "  NaN         " + std::to_string(figures.nan) + "\n  infinite    " + std::to_string(figures.infinite) + "\n";
    if (figures.finite == 0) {
      return std::string("  measured    no sample is ") + (figures.infinite == 0 ? "a number" : "finite") + "\n" +
             counts;
    }
    return "  measured    " + FormatFloat(figures.measured.low) + " to " + FormatFloat(figures.measured.high) +
           "\n  mean        " + FormatFloat(static_cast<float>(figures.mean)) + "\n  deviation   " +
           FormatFloat(static_cast<float>(figures.deviation)) + "\n" + counts +
           "  histogram of the finite samples, each bar from\n" + DrawHistogram(figures);
  }

  static std::string Describe(const std::string& name, const Image& image, const ImageFigures& figures,
                              const ScEng::FileDescription& file) {
    std::ostringstream text;
    text << name << "\n"
         << "  size        " << image.GetSizeX() << " x " << image.GetSizeY() << "\n"
         << "  mode        " << ColorMode::GetName(image.GetColorMode()) << " (" << image.GetColorMode() << "), "
         << image.GetNumChannels() << (image.GetNumChannels() == 1 ? " channel" : " channels") << "\n"
         << "  pin         " << image.GetPinX() << ", " << image.GetPinY() << "   pivot "
         << FormatFloat(image.GetPivotX()) << ", " << FormatFloat(image.GetPivotY()) << "\n"
         << "  declared    " << FormatFloat(image.GetValueLow()) << " to " << FormatFloat(image.GetValueHigh()) << "\n"
         << DescribeSamples(figures) << "The file\n"
         << DescribeFile(file);
    return text.str();
  }

  static void AddFigures(const Image& image, const ImageFigures& figures, nlohmann::ordered_json& answer) {
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
  }

  std::vector<std::string> files_;
  std::atomic<bool> has_finished_{false};
  bool is_summary_ = false;
  std::size_t bins_ = 16;
  ScEng::ReadOptions options_;
  std::string samples_;
};

}  // namespace

std::unique_ptr<Command> MakeStatsCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<StatsCommand>(common, reporter);
}

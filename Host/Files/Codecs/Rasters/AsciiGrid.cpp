// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/AsciiGrid.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "Host/Files/Codecs/Rasters/Numbers.h"

namespace ScEng {
namespace {

constexpr std::size_t kBufferBytes = 1 << 16;
constexpr std::size_t kMostWord = 64;
constexpr int kRowsBetweenPlaces = 64;

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\0'; }

/// A number as such files have it; some write a comma for the point.
std::optional<double> ParseSample(std::string_view word) {
  if (const std::size_t comma = word.find(','); comma != std::string_view::npos) {
    std::string pointed(word);
    pointed[comma] = '.';
    return Parse<double>(pointed);
  }
  const auto number = Parse<double>(word);
  if (number) return number;
  // A number that is too small for a double is still a number.
  const bool is_number = word.find_first_not_of("+-.0123456789eE") == std::string_view::npos;
  if (!is_number || word.find_first_of("0123456789") == std::string_view::npos) return std::nullopt;
  const double small = std::strtod(std::string(word).c_str(), nullptr);
  return std::isfinite(small) ? std::optional(small) : std::nullopt;
}

std::string Show(std::string_view word) {
  std::string shown(word.substr(0, 20));
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F) c = '?';
  }
  return shown;
}

}  // namespace

AsciiGridReader::AsciiGridReader(const std::string& path, int size_x, int size_y)
    : file_(path, std::ios::binary), size_x_(size_x), size_y_(size_y), buffer_(kBufferBytes) {
  GoTo(0);
  SkipHeader();
}

void AsciiGridReader::SkipHeader() {
  constexpr int kMostKeys = 32;
  std::streamoff begin = 0;
  for (int i = 0; i <= kMostKeys; ++i) {
    begin = GetOffset();
    const std::string_view word = NextWord();
    const bool is_key = !word.empty() && std::isalpha(static_cast<unsigned char>(word.front())) != 0;
    if (!is_key || ParseSample(word)) break;
    NextWord();
  }
  GoTo(begin);
  places_.push_back({0, begin});
}

void AsciiGridReader::GoTo(std::streamoff offset) {
  file_.clear();
  file_.seekg(offset);
  buffer_offset_ = offset;
  at_ = 0;
  end_ = 0;
}

bool AsciiGridReader::Refill() {
  buffer_offset_ += static_cast<std::streamoff>(end_);
  at_ = 0;
  file_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  end_ = static_cast<std::size_t>(std::max<std::streamsize>(file_.gcount(), 0));
  return end_ > 0;
}

std::string_view AsciiGridReader::NextWord() {
  word_.clear();
  while (at_ < end_ || Refill()) {
    const char c = buffer_[at_];
    if (IsSpace(c) && !word_.empty()) break;
    ++at_;
    if (!IsSpace(c) && word_.size() < kMostWord) word_ += c;
  }
  return word_;
}

Status AsciiGridReader::ReadRow(int row, std::vector<double>& numbers) {
  if (row != next_row_) {
    const auto after = std::upper_bound(places_.begin(), places_.end(), row,
                                        [](int wanted, const Place& place) { return wanted < place.row; });
    const Place& place = *std::prev(after);
    if (row < next_row_ || place.row > next_row_) {
      GoTo(place.offset);
      next_row_ = place.row;
    }
  }
  numbers.resize(static_cast<std::size_t>(size_x_));
  for (; next_row_ <= row; ++next_row_) {
    if (next_row_ >= places_.back().row + kRowsBetweenPlaces) places_.push_back({next_row_, GetOffset()});
    for (int column = 0; column < size_x_; ++column) {
      const std::string_view word = NextWord();
      if (word.empty()) {
        Status status = Status::Error("the file is shortened: " + std::to_string(next_row_) + " of " +
                                      std::to_string(size_y_) + " rows are there");
        next_row_ = size_y_;
        return status;
      }
      const auto number = ParseSample(word);
      if (!number) {
        const bool is_large = std::isinf(std::strtod(std::string(word).c_str(), nullptr));
        Status status = Status::Error("\"" + Show(word) + "\" at column " + std::to_string(column) + ", row " +
                                      std::to_string(next_row_) + (is_large ? " is too large" : " is no number"));
        next_row_ = size_y_;
        return status;
      }
      numbers[static_cast<std::size_t>(column)] = *number;
    }
  }
  return next_row_ == size_y_ ? CheckEnd() : Status();
}

Status AsciiGridReader::CheckEnd() {
  if (NextWord().empty()) return {};
  next_row_ = size_y_ + 1;
  return Status::Error("more numbers follow its " + std::to_string(size_x_) + " columns x " + std::to_string(size_y_) +
                       " rows");
}

// ---- Writing ----

namespace {

class AsciiGridWriter final : public ImageEncoder {
 public:
  AsciiGridWriter(const std::string& path, const WritePlan& plan) : file_(path, std::ios::binary), plan_(plan) {}

  /// What goes before the samples. An unplaced image lies with its lower left corner at (0, 0), a pixel a unit.
  void WriteHeader(const std::array<double, 6>& transform) {
    const double cell_x = transform[1];
    const double cell_y = -transform[5];
    std::string text = "ncols " + std::to_string(plan_.size_x) + "\nnrows " + std::to_string(plan_.size_y) +
                       "\nxllcorner " + FormatNumber(transform[0]) + "\nyllcorner " +
                       FormatNumber(transform[3] - plan_.size_y * cell_y) + '\n';
    if (cell_x == cell_y) {
      text += "cellsize " + FormatNumber(cell_x) + '\n';
    } else {
      text += "dx " + FormatNumber(cell_x) + "\ndy " + FormatNumber(cell_y) + '\n';
    }
    if (plan_.metadata.nodata) text += "NODATA_value " + FormatNumber(*plan_.metadata.nodata) + '\n';
    file_ << text;
  }

  Status WriteRows(int row_begin, int row_end, const void* samples) override {
    const auto* numbers = static_cast<const float*>(samples);
    for (int row = row_begin; row < row_end; ++row) {
      line_.clear();
      for (int column = 0; column < plan_.size_x; ++column) AddSample(*numbers++);
      line_.back() = '\n';
      file_ << line_;
    }
    return CheckFile();
  }

  Status Finish() override {
    file_.close();
    return CheckFile();
  }

 private:
  void AddSample(float number) {
    if (std::isnan(number) && plan_.metadata.nodata) {
      line_ += FormatNumber(*plan_.metadata.nodata);
    } else {
      const std::string text = FormatNumber(number);
      line_ += text;
      // Readers take a grid without any point for one of whole numbers.
      if (text.find_first_of(".enf") == std::string::npos) line_ += ".0";
    }
    line_ += ' ';
  }

  [[nodiscard]] Status CheckFile() const {
    return file_ ? Status() : Status::Error("the samples could not be written; is there enough space?");
  }

  std::ofstream file_;
  WritePlan plan_;
  std::string line_;
};

}  // namespace

std::unique_ptr<ImageEncoder> CreateAsciiGrid(const std::string& path, const WritePlan& plan,
                                              std::vector<std::string>& notes, Status& status) {
  if (plan.channels.size() != 1 || plan.type != StoredType::kFloat) {
    status = Status::Error("an ASCII grid holds one channel of float samples");
    return nullptr;
  }
  std::array<double, 6> transform{0, 1, 0, static_cast<double>(plan.size_y), 0, -1};
  if (const auto& georeference = plan.metadata.georeference) {
    if (georeference->transform) {
      const auto& t = *georeference->transform;
      const bool fits = t[2] == 0 && t[4] == 0 && t[1] > 0 && t[5] < 0;
      if (fits) transform = t;
      if (!fits) notes.push_back("the place on the ground is left out: an ASCII grid has its rows from north to south");
    }
    if (!georeference->coordinate_system.empty()) {
      notes.push_back("the coordinate system is left out: an ASCII grid does not hold it");
    }
  }
  auto writer = std::make_unique<AsciiGridWriter>(path, plan);
  writer->WriteHeader(transform);
  return writer;
}

}  // namespace ScEng

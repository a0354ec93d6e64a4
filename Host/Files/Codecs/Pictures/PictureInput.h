// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenImageIO/imageio.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Pictures/WatchedFile.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// A file that is open in the library of formats.
class PictureInput {
 public:
  /// Opens a file in exactly the named format; null, and a clause, where that fails.
  static std::unique_ptr<PictureInput> Open(const std::filesystem::path& file, const std::string& format,
                                            std::string& problem);
  /// Opens a file whose format its first bytes do not tell.
  static std::unique_ptr<PictureInput> Find(const std::filesystem::path& file, std::string& problem);
  ~PictureInput();

  [[nodiscard]] const std::string& GetFormat() const { return format_; }
  [[nodiscard]] const OIIO::ImageSpec& GetSpec() const { return input_->spec(); }
  bool Seek(int subimage) { return input_->seek_subimage(subimage, 0); }
  /// Forgets what a search for further parts found wrong.
  void ClearError();

  /// Reads rows [begin, end) of the current part in the file's own types; of a tiled part, whole rows of tiles.
  Status ReadRows(int begin, int end, std::vector<unsigned char>& to);

 private:
  PictureInput() = default;
  [[nodiscard]] std::string Explain(int begin) const;

  std::string format_;
  // The library keeps a pointer to the file, which is why it is declared first and destroyed last.
  std::unique_ptr<WatchedFile> file_;
  std::unique_ptr<OIIO::ImageInput> input_;
  bool sees_end_ = false;
};

/// A message of a library as one clause: without control characters, without a full stop and not too long.
std::string MakeClause(std::string_view message);

}  // namespace ScEng

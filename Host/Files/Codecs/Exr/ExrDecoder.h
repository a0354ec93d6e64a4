// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenEXR/ImfMultiPartInputFile.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Exr/ExrChunks.h"
#include "Host/Files/Codecs/Exr/ExrHeader.h"
#include "Host/Files/Codecs/Exr/ExrStream.h"

namespace ScEng::Exr {

/// An EXR file: each of its parts by rows of chunks.
class ExrDecoder final : public ImageDecoder {
 public:
  /// To be called once, before all others.
  Status Open(const std::filesystem::path& file);

  [[nodiscard]] const FileDescription& GetDescription() const override { return description_; }
  Status Read(const ReadRequest& request, const ReadTarget& target) override;

 private:
  /// A channel that a request names, once, and where in the request.
  struct WantedChannel {
    const char* name;
    StoredType type;
    std::vector<std::size_t> places;
  };

  FilePart DescribePart(const PartHeader& header);
  [[nodiscard]] std::vector<WantedChannel> ListWanted(const ReadRequest& request) const;
  Status OpenPixels();
  Status ReadBlock(const ReadRequest& request, const std::vector<WantedChannel>& wanted, int row_begin, int row_end,
                   const ReadTarget& target);
  void Deliver(const ReadRequest& request, const std::vector<WantedChannel>& wanted, int row_begin, int row_end,
               const ReadTarget& target) const;

  FilePointer file_;
  FileHeader header_;
  FileDescription description_;
  /// What the library reads from and with, from the first pixels on.
  std::unique_ptr<InputStream> stream_;
  std::unique_ptr<Imf::MultiPartInputFile> pixels_;
  std::optional<std::size_t> checked_part_;
  std::unique_ptr<ChunkTable> chunks_;
  /// The samples of a block of rows, four bytes each, channel after channel.
  std::vector<std::uint32_t> block_;
};

}  // namespace ScEng::Exr

// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/ImageFile.h"

#include <algorithm>
#include <exception>
#include <new>
#include <sstream>
#include <system_error>
#include <utility>

#include "Host/Files/AtomicFile.h"
#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/Decoding/HelperDecoder.h"
#include "Host/Files/FileErrors.h"
#include "Host/Files/FileStages.h"
#include "Host/Files/ImageFormats.h"
#include "Host/Files/PathProblem.h"
#include "Host/Files/Reading/OpenFile.h"
#include "Host/Files/Reading/ReadImage.h"
#include "Host/Files/Saving/TargetFile.h"
#include "Host/Files/Writing/WriteImage.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/HostModule.h"

namespace ScEng {
namespace {

std::size_t CountSampleBytes(const Image& image) { return image.GetNumSamples() * sizeof(float); }

std::size_t CountSampleBytes(const std::vector<ImageLayer>& layers) {
  std::size_t bytes = 0;
  for (const ImageLayer& layer : layers) bytes += CountSampleBytes(*layer.image);
  return bytes;
}

/// Notes that codecs make do not name the file; the ones that people read do.
void TellNotes(const std::filesystem::path& file, const std::vector<std::string>& clauses,
               std::vector<std::string>& notes) {
  for (const std::string& clause : clauses) notes.push_back("\"" + file.string() + "\": " + OneLine(clause));
}

/// Runs a function that codecs may throw out of; what they throw becomes a clause.
template <class Function>
void Guard(std::string& problem, const Function& function) {
  try {
    function();
  } catch (const Canceled&) {
    // The evaluation that reads is asked to stop.
    throw;
  } catch (const std::bad_alloc&) {
    problem = "there is not enough memory for it";
  } catch (const std::exception& thrown) {
    problem = thrown.what();
  }
}

Status WriteLayers(const std::vector<ImageLayer>& layers, const std::filesystem::path& file,
                   std::vector<std::string>& notes, SampleType* type) {
  std::string problem = FindPathProblem(file);
  if (!problem.empty()) return MakeWriteError(file, problem);
  const FormatRow* format = ChooseFormat(file, layers, problem);
  if (format == nullptr) return MakeWriteError(file, problem);
  const MemoryFile memory;
  if (!memory.IsOpen()) return MakeWriteError(file, "no memory file could be made to encode it in");
  std::vector<std::string> clauses;
  FileStages stages(file);
  SampleType stored = SampleType::kFloat;
  Guard(problem, [&] { problem = EncodeImage(layers, *format, memory.GetPath(), clauses, stored).GetMessage(); });
  if (!problem.empty()) return MakeWriteError(file, problem);
  stages.End(FileWork::kEncode, CountSampleBytes(layers));
  const Status status = ReplaceFile(file, memory.GetDescriptor());
  if (status.IsError()) return status;
  stages.End(FileWork::kSave);
  TellNotes(file, clauses, notes);
  if (type != nullptr) *type = stored;
  return status;
}

}  // namespace

const char* GetName(SampleType type) {
  switch (type) {
    case SampleType::kFloat: return "float";
    case SampleType::kHalf: return "half";
    case SampleType::kUint16: return "uint16";
    case SampleType::kUint8: return "uint8";
    case SampleType::kInt16: break;
  }
  return "int16";
}

std::optional<SampleType> FindSampleType(std::string_view name) {
  for (const SampleType type :
       {SampleType::kFloat, SampleType::kHalf, SampleType::kUint16, SampleType::kUint8, SampleType::kInt16}) {
    if (name == GetName(type)) return type;
  }
  return std::nullopt;
}

WriteOptions MakeWriteOptions(std::string_view type, std::string_view samples, std::string_view opacity,
                              std::string_view metadata) {
  WriteOptions options;
  options.type = FindSampleType(type);
  options.stores_values = samples == "stored";
  if (opacity == "keep") options.opacity = OpacityRule::kKeep;
  if (opacity == "drop") options.opacity = OpacityRule::kDrop;
  options.strips_metadata = metadata == "strip";
  return options;
}

std::filesystem::path MakePath(const std::string& written, const std::filesystem::path& folder) {
  std::string path = written;
  std::replace(path.begin(), path.end(), '\\', '/');
  return folder / path;
}

std::filesystem::path MakeReadPath(const std::string& written, const std::filesystem::path& folder) {
  std::error_code error;
  const bool is_there = written.find('\\') != std::string::npos && std::filesystem::exists(folder / written, error);
  return is_there ? folder / written : MakePath(written, folder);
}

ImagePtr ReadImageFile(const std::filesystem::path& file, const ReadOptions& options, Status& status,
                       std::vector<std::string>& notes, std::optional<FileDescription>* description) {
  std::string problem;
  ImagePtr image;
  std::vector<std::string> clauses;
  Guard(problem, [&] {
    FileStages stages(file);
    const auto decoder = OpenImageFile(file, problem);
    if (decoder == nullptr) return;
    stages.End(FileWork::kOpen);
    if (description != nullptr) *description = decoder->GetDescription();
    image = ReadImage(*decoder, options, problem, clauses);
    if (image) stages.End(FileWork::kDecode, CountSampleBytes(*image));
  });
  if (!problem.empty()) {
    status = MakeReadError(file, problem);
    return nullptr;
  }
  TellNotes(file, clauses, notes);
  return image;
}

std::optional<FileDescription> DescribeImageFile(const std::filesystem::path& file, Status& status) {
  std::string problem;
  std::optional<FileDescription> description;
  Guard(problem, [&] {
    const auto decoder = OpenImageFile(file, problem);
    if (decoder != nullptr) description = decoder->GetDescription();
  });
  if (!problem.empty()) status = MakeReadError(file, problem);
  return description;
}

Status WriteImageFile(const Image& image, const std::filesystem::path& file, const WriteOptions& options,
                      std::vector<std::string>& notes) {
  return WriteLayers({{"", &image, options}}, file, notes, nullptr);
}

Status WriteImageLayers(const std::vector<ImageLayer>& layers, const std::filesystem::path& file,
                        std::vector<std::string>& notes, SampleType* type) {
  return WriteLayers(layers, file, notes, type);
}

std::vector<std::string> FindSaveProblems(const std::filesystem::path& file) {
  std::vector<std::string> problems;
  if (const std::string problem = FindEndingProblem(file); !problem.empty()) problems.push_back(problem);
  const std::string place_problem = TargetFile().Find(file);
  if (!place_problem.empty()) problems.push_back(place_problem);
  for (std::string& problem : problems) problem = MakeWriteError(file, problem).GetMessage();
  return problems;
}

bool HasLayers(const std::filesystem::path& file) {
  const auto rows = GetFormatRows();
  return std::any_of(rows.begin(), rows.end(),
                     [&](const FormatRow& row) { return row.layers && HasEnding(row, file); });
}

Status WriteWholeFile(const std::filesystem::path& file, std::string_view bytes) {
  const MemoryFile memory;
  if (!memory.IsOpen()) return MakeWriteError(file, "no memory file could be made");
  if (const std::string problem = memory.Write(bytes); !problem.empty()) return MakeWriteError(file, problem);
  return ReplaceFile(file, memory.GetDescriptor());
}

std::string TryPlace(const std::filesystem::path& file) { return TryToReplaceFile(file); }

std::vector<FormatReport> ListFormats() {
  std::vector<FormatReport> reports;
  for (const FormatRow& row : GetFormatRows()) {
    FormatReport report;
    report.title = row.title;
    report.codec = row.codec;
    std::istringstream endings(row.endings);
    for (std::string ending; std::getline(endings, ending, ',');) report.endings.push_back(ending);
    report.writes = row.writes;
    for (const StoredType type : row.types) report.types.emplace_back(GetName(type));
    report.channels = row.channels;
    report.has_opacity = row.opacity;
    report.has_layers = row.layers;
    const FormatMetadata& held = row.metadata;
    const std::pair<bool, const char*> kinds[] = {{held.exif, "EXIF"},
                                                  {held.iptc, "IPTC"},
                                                  {held.xmp, "XMP"},
                                                  {held.icc, "profile"},
                                                  {held.resolution, "resolution"},
                                                  {held.texts, "texts"},
                                                  {held.attributes, "attributes"},
                                                  {held.georeference, "coordinates"},
                                                  {held.nodata, "nodata"}};
    for (const auto& [is_held, name] : kinds) {
      if (is_held) report.metadata.emplace_back(name);
    }
    reports.push_back(std::move(report));
  }
  return reports;
}

std::vector<CodecReport> FindCodecs() {
  std::vector<CodecReport> reports;
  for (const CodecRow& row : GetCodecRows()) {
    const HostModule module(row.module, std::string("the module of the codec \"") + row.name + "\"");
    CodecReport report;
    report.name = row.name;
    report.file = module.GetFile();
    static_cast<void>(LoadCodec(row, report.problem));
    for (const FormatRow& format : GetFormatRows()) {
      if (std::string_view(format.codec) == row.name) report.formats.emplace_back(format.title);
    }
    const HelperReport helper = CheckHelper(row);
    report.decoder_problem = helper.problem;
    report.is_confined = helper.is_confined;
    reports.push_back(std::move(report));
  }
  return reports;
}

}  // namespace ScEng

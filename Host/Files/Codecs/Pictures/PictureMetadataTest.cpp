// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdio>
#include <memory>

#include "Host/Files/Codecs/Pictures/PictureTesting.h"

// Metadata from file to file, put in and looked at by ExifTool.

namespace ScEng {
namespace {

std::string Answer(const std::string& command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string answer;
  std::array<char, 4096> piece{};
  while (std::fgets(piece.data(), piece.size(), pipe.get()) != nullptr) answer += piece.data();
  while (!answer.empty() && answer.back() == '\n') answer.pop_back();
  return answer;
}

std::string Ask(const std::filesystem::path& file, const std::string& tag) {
  return Answer("exiftool -n -s3 -" + tag + " " + file.string());
}

constexpr const char* kXmp =
    "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
    "xmlns:field='http://example.com/field/1.0/' field:Plot='17b'/></rdf:RDF></x:xmpmeta><?xpacket end='w'?>";

/// A profile with a copyright and nothing else; its length is in its first four bytes.
std::vector<std::uint8_t> MakeProfile() {
  std::vector<std::uint8_t> profile(160, 0);
  const auto put = [&](std::size_t at, const char* text) { std::memcpy(&profile[at], text, 4); };
  profile[3] = 160;
  profile[8] = 2;
  put(12, "mntr");
  put(16, "RGB ");
  put(20, "XYZ ");
  put(36, "acsp");
  profile[131] = 1;
  put(132, "cprt");
  profile[139] = 144;
  profile[143] = 16;
  put(144, "text");
  put(152, "Free");
  return profile;
}

class TravelingMetadata : public testing::Test {
 protected:
  TravelingMetadata() : plan_(MakePlan(16, 8, 3, StoredType::kUint8)), samples_(16 * 8 * 3, 90) {
    plan_.metadata.xmp = kXmp;
    plan_.metadata.icc = MakeProfile();
    plan_.metadata.resolution = {300.0, 150.0};
    plan_.metadata.resolution_unit = "in";
    plan_.metadata.entries.push_back({"Comment", std::string("From the east gate")});
  }

  /// A JPEG as a camera makes it.
  std::filesystem::path MakeSource() {
    const auto file = folder_ / "source.jpg";
    EXPECT_EQ(WritePicture(file, "jpeg", plan_, samples_), "");
    Answer(
        "exiftool -q -overwrite_original -n -Make=Acme -Model='Number 5' -Artist='Ada L' -ExposureTime=0.008 "
        "-ISO=400 -GPSLatitude=48.5 -GPSLatitudeRef=N -GPSLongitude=9.25 -GPSLongitudeRef=E -Orientation=6 "
        "-IPTC:Keywords=meadow " +
        file.string());
    return file;
  }

  TestFolder folder_;
  WritePlan plan_;
  std::vector<unsigned char> samples_;
};

TEST_F(TravelingMetadata, IsReadFromJpeg) {
  const ReadPicture read = ReadPart(MakeSource(), "jpeg");
  ASSERT_EQ(read.problem, "");
  const FilePart& part = read.description.parts.front();
  EXPECT_EQ(part.orientation, 6);
  EXPECT_EQ(part.metadata.xmp, kXmp);
  EXPECT_EQ(part.metadata.icc, MakeProfile());
  EXPECT_EQ(part.metadata.resolution, (std::array<double, 2>{300.0, 150.0}));
  EXPECT_EQ(part.metadata.resolution_unit, "in");
  ASSERT_NE(part.metadata.Find("Artist"), nullptr);
  EXPECT_EQ(std::get<std::string>(part.metadata.Find("Artist")->value), "Ada L");
  ASSERT_NE(part.metadata.Find("Comment"), nullptr);
  EXPECT_EQ(std::get<std::string>(part.metadata.Find("Comment")->value), "From the east gate");
  EXPECT_FALSE(part.metadata.iptc.empty());
  // The block is a TIFF file of its own.
  WriteFile(folder_ / "block.tif", {part.metadata.exif.begin(), part.metadata.exif.end()});
  EXPECT_EQ(Ask(folder_ / "block.tif", "Orientation"), "1");
  EXPECT_EQ(Ask(folder_ / "block.tif", "Model"), "Number 5");
}

TEST_F(TravelingMetadata, ReachesEveryFormatThatHoldsIt) {
  const ReadPicture source = ReadPart(MakeSource(), "jpeg");
  ASSERT_EQ(source.problem, "");
  plan_.metadata = source.description.parts.front().metadata;
  for (const std::string format : {"jpeg", "tiff", "webp", "jpeg2000"}) {
    SCOPED_TRACE(format);
    const auto file = folder_ / ("copy" + std::string(FindFormatRow(format)->endings).substr(0, 4));
    std::vector<std::string> notes;
    ASSERT_EQ(WritePicture(file, format, plan_, samples_, &notes), "");
    EXPECT_EQ(Ask(file, "Make"), "Acme");
    EXPECT_EQ(Ask(file, "Model"), "Number 5");
    EXPECT_EQ(Ask(file, "Artist"), "Ada L");
    EXPECT_EQ(Ask(file, "ExposureTime"), "0.008");
    EXPECT_EQ(Ask(file, "ISO"), "400");
    EXPECT_EQ(Ask(file, "EXIF:GPSLatitude"), "48.5");
    EXPECT_EQ(Ask(file, "EXIF:GPSLongitudeRef"), "E");
    EXPECT_EQ(Ask(file, "EXIF:XResolution"), "300");
    EXPECT_EQ(Ask(file, "EXIF:YResolution"), "150");
    EXPECT_EQ(Ask(file, "EXIF:Orientation"), "1");
    EXPECT_EQ(Ask(file, "XMP:Plot"), "17b");
    EXPECT_EQ(Ask(file, "ICC_Profile:ProfileFileSignature"), "acsp");
    EXPECT_EQ(Ask(file, "Warning"), "");
    if (format != "webp") {
      EXPECT_EQ(Ask(file, "IPTC:Keywords"), "meadow");
      EXPECT_TRUE(notes.empty());
    } else {
      EXPECT_EQ(notes, std::vector<std::string>{"the format holds no IPTC block, which is left out"});
    }
    const ReadPicture read = ReadPart(file, format);
    ASSERT_EQ(read.problem, "");
    const ImageMetadata& metadata = read.description.parts.front().metadata;
    EXPECT_EQ(metadata.xmp, kXmp);
    EXPECT_EQ(metadata.icc, MakeProfile());
    EXPECT_EQ(metadata.resolution, plan_.metadata.resolution);
    EXPECT_EQ(metadata.resolution_unit, "in");
    EXPECT_EQ(read.description.parts.front().orientation, 1);
    // No more is there than what was written.
    EXPECT_TRUE(read.description.notes.empty());
  }
}

TEST_F(TravelingMetadata, KeepsTheTextsOfTiff) {
  plan_.metadata = {};
  for (const char* name : {"ImageDescription", "Artist", "Copyright", "Software", "DateTime", "DocumentName"}) {
    const bool is_time = std::string(name) == "DateTime";
    plan_.metadata.entries.push_back(
        {name, is_time ? std::string("2024:02:29 12:00:00") : "Text of " + std::string(name)});
  }
  ASSERT_EQ(WritePicture(folder_ / "a.tif", "tiff", plan_, samples_), "");
  const ReadPicture read = ReadPart(folder_ / "a.tif", "tiff");
  ASSERT_EQ(read.problem, "");
  for (const MetadataEntry& entry : plan_.metadata.entries) {
    const MetadataEntry* found = read.description.parts.front().metadata.Find(entry.name);
    ASSERT_NE(found, nullptr) << entry.name;
    EXPECT_EQ(*found, entry);
  }
  EXPECT_EQ(Ask(folder_ / "a.tif", "Copyright"), "Text of Copyright");
}

TEST_F(TravelingMetadata, WritesNoTimeOfItsOwn) {
  plan_.metadata = {};
  ASSERT_EQ(WritePicture(folder_ / "a.tif", "tiff", plan_, samples_), "");
  EXPECT_EQ(Ask(folder_ / "a.tif", "ModifyDate"), "");
  EXPECT_EQ(Ask(folder_ / "a.tif", "Software"), "");
}

TEST_F(TravelingMetadata, IsNotedWhereAFormatHasNoPlaceForIt) {
  plan_.metadata.georeference = Georeference{};
  plan_.metadata.nodata = -9999.0;
  std::vector<std::string> notes;
  ASSERT_EQ(WritePicture(folder_ / "a.bmp", "bmp", plan_, samples_, &notes), "");
  EXPECT_EQ(notes, (std::vector<std::string>{"the format holds no coordinate system, which is left out",
                                             "the format holds no colour profile, which is left out",
                                             "the format holds no XMP packet, which is left out",
                                             "the format holds no value for missing samples, which is left out"}));
}

TEST_F(TravelingMetadata, IsLeftOutWhereItIsDamaged) {
  const auto file = MakeSource();
  std::string bytes = ReadFile(file);
  const std::size_t at = bytes.find("Exif");
  ASSERT_NE(at, std::string::npos);
  // The offset of the first directory points behind everything.
  for (std::size_t i = 0; i < 4; ++i) bytes[at + 10 + i] = '\x7f';
  WriteFile(file, bytes);
  const ReadPicture read = ReadPart(file, "jpeg");
  EXPECT_EQ(read.problem, "");
  EXPECT_TRUE(read.description.parts.front().metadata.exif.empty());
}

}  // namespace
}  // namespace ScEng

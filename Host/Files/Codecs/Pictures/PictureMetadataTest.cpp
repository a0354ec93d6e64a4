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
      EXPECT_EQ(notes, std::vector<std::string>{"these metadata are not stored by this format: IPTC"});
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
  EXPECT_EQ(notes, std::vector<std::string>{"these metadata are not stored by this format: coordinate system, color "
                                            "profile, XMP, texts, nodata value"});
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

TEST_F(TravelingMetadata, PutsEachTextWhereAFormatHasAPlace) {
  plan_.metadata.entries = {{"ImageDescription", std::string("Gate, caf\xC3\xA9")},
                            {"ImageDescription", std::string("Another")},
                            {"Comment", std::string("First")},
                            {"Comment", std::string("Second \xE6\x97\xA5")},
                            {"Creation note", std::string("a < b & c")},
                            {"count", std::vector<std::int64_t>{3, -4}},
                            {"gAMA", OpaqueValue{"png:gAMA", {0, 0, 177, 143}}}};
  for (const std::string format : {"jpeg", "tiff", "webp", "jpeg2000"}) {
    SCOPED_TRACE(format);
    const auto file = folder_ / ("texts" + std::string(FindFormatRow(format)->endings).substr(0, 4));
    std::vector<std::string> notes;
    ASSERT_EQ(WritePicture(file, format, plan_, samples_, &notes), "");
    EXPECT_EQ(notes, std::vector<std::string>{
                         "the format cannot hold these entries of the metadata, which are left out: gAMA"});
    EXPECT_EQ(Ask(file, "IFD0:ImageDescription"), "Gate, caf\xC3\xA9");
    EXPECT_EQ(Ask(file, "XMP-text:ImageDescription"), "Another");
    if (format == "jpeg") {
      EXPECT_EQ(Answer("exiftool -a -s3 -File:Comment " + file.string()), "First\nSecond \xE6\x97\xA5");
    } else {
      EXPECT_EQ(Ask(file, "ExifIFD:UserComment"), "First");
      EXPECT_EQ(Ask(file, "XMP-text:Comment"), "Second \xE6\x97\xA5");
    }
    EXPECT_EQ(Ask(file, "XMP-text:CreationNote"), "a < b & c");
    EXPECT_EQ(Ask(file, "XMP-text:Count"), "3, -4");
    EXPECT_EQ(Ask(file, "XMP:Plot"), "17b");
    EXPECT_EQ(Ask(file, "Warning"), "");
  }
}

TEST_F(TravelingMetadata, KeepsTheBlocksOfJpegWhereATextIsTooLong) {
  plan_.metadata.entries = {{"ImageDescription", std::string(70000, 'd')},
                            {"Long", std::string(70000, 'l')},
                            {"Short", std::string("s")},
                            {"Comment", std::string(65534, 'c')}};
  std::vector<std::string> notes;
  ASSERT_EQ(WritePicture(folder_ / "a.jpg", "jpeg", plan_, samples_, &notes), "");
  EXPECT_EQ(notes, (std::vector<std::string>{"the format cannot hold these entries of the metadata, which are left "
                                             "out: ImageDescription, Long",
                                             "the format holds no comment of 65534 bytes, which is left out"}));
  EXPECT_EQ(Ask(folder_ / "a.jpg", "XMP:Plot"), "17b");
  EXPECT_EQ(Ask(folder_ / "a.jpg", "XMP-text:Short"), "s");
}

TEST_F(TravelingMetadata, KeepsAUsersCommentBesideOneMore) {
  const auto source = MakeSource();
  Answer("exiftool -q -overwrite_original -UserComment='From a camera' " + source.string());
  plan_.metadata = ReadPart(source, "jpeg").description.parts.front().metadata;
  ASSERT_EQ(WritePicture(folder_ / "a.tif", "tiff", plan_, samples_), "");
  EXPECT_EQ(Ask(folder_ / "a.tif", "ExifIFD:UserComment"), "From a camera");
  EXPECT_EQ(Ask(folder_ / "a.tif", "XMP-text:Comment"), "From the east gate");
}

TEST_F(TravelingMetadata, HoldsEveryCommentOfAJpeg) {
  plan_.metadata.entries = {{"Comment", std::string("First")}, {"Comment", std::string("Second")}};
  ASSERT_EQ(WritePicture(folder_ / "a.jpg", "jpeg", plan_, samples_), "");
  const ReadPicture read = ReadPart(folder_ / "a.jpg", "jpeg");
  EXPECT_EQ(read.description.parts.front().metadata.entries, plan_.metadata.entries);
}

TEST_F(TravelingMetadata, ReachesTheMainDirectoryOfTiff) {
  const auto source = MakeSource();
  Answer("exiftool -q -overwrite_original -n -IFD0:XPTitle='Gate 5' -IFD0:Rating=3 -HostComputer=abc " +
         source.string());
  plan_.metadata = ReadPart(source, "jpeg").description.parts.front().metadata;
  ASSERT_EQ(WritePicture(folder_ / "a.tif", "tiff", plan_, samples_), "");
  EXPECT_EQ(Ask(folder_ / "a.tif", "IFD0:XPTitle"), "Gate 5");
  EXPECT_EQ(Ask(folder_ / "a.tif", "IFD0:Rating"), "3");
  EXPECT_EQ(Ask(folder_ / "a.tif", "IFD0:HostComputer"), "abc");
  EXPECT_EQ(Ask(folder_ / "a.tif", "Warning"), "");
  const ReadPicture read = ReadPart(folder_ / "a.tif", "tiff");
  EXPECT_EQ(read.problem, "");
  plan_.metadata = read.description.parts.front().metadata;
  ASSERT_EQ(WritePicture(folder_ / "b.tif", "tiff", plan_, samples_), "");
  EXPECT_EQ(Ask(folder_ / "b.tif", "IFD0:XPTitle"), "Gate 5");
}

TEST_F(TravelingMetadata, HoldsAProfileOnlyForItsChannels) {
  struct Case {
    const char* format;
    const char* space;
    int channels;
    bool is_held;
  };
  constexpr std::array kCases{Case{"jpeg", "RGB ", 1, false}, Case{"jpeg", "GRAY", 1, true},
                              Case{"jpeg", "GRAY", 3, false}, Case{"tiff", "RGB ", 1, false},
                              Case{"tiff", "RGB ", 2, false}, Case{"tiff", "GRAY", 2, true},
                              Case{"tiff", "RGB ", 4, true}, Case{"jpeg2000", "RGB ", 1, false},
                              Case{"jpeg2000", "GRAY", 1, true}, Case{"jpeg2000", "CMYK", 3, false},
                              // Its pictures are always of red, green and blue.
                              Case{"webp", "RGB ", 1, true}, Case{"webp", "GRAY", 1, false}};
  for (const Case& c : kCases) {
    SCOPED_TRACE(std::string(c.format) + " " + c.space + " " + std::to_string(c.channels));
    WritePlan plan = MakePlan(16, 8, c.channels, StoredType::kUint8);
    plan.metadata.icc = MakeProfile();
    std::memcpy(&plan.metadata.icc[16], c.space, 4);
    const auto file = folder_ / "profile";
    std::vector<std::string> notes;
    const std::vector<unsigned char> samples(static_cast<std::size_t>(16 * 8 * c.channels), 90);
    ASSERT_EQ(WritePicture(file, c.format, plan, samples, &notes), "");
    EXPECT_EQ(Ask(file, "ICC_Profile:ProfileFileSignature"), c.is_held ? "acsp" : "");
    const std::string kind = c.channels <= 2 && std::string(c.format) != "webp" ? "gray" : "RGB";
    const std::vector<std::string> wanted{"the color profile does not describe " + kind + " samples and is left out"};
    EXPECT_EQ(notes, c.is_held ? std::vector<std::string>() : wanted);
  }
}

}  // namespace
}  // namespace ScEng

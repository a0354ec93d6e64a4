// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/RastersTesting.h"

namespace ScEng {
namespace {

TEST_F(RastersCodec, ReadsAnSrtmTile) {
  constexpr int kSide = 1201;
  std::string bytes(static_cast<std::size_t>(kSide) * kSide * 2, '\0');
  const auto set = [&](int column, int row, int meters) {
    const std::size_t at = (static_cast<std::size_t>(row) * kSide + static_cast<std::size_t>(column)) * 2;
    bytes[at] = static_cast<char>(meters >> 8);
    bytes[at + 1] = static_cast<char>(meters);
  };
  set(0, 0, 4810);
  set(1, 0, -430);
  set(1200, 1200, -32768);
  const auto samples = ReadFile(Put("N46E007.hgt", bytes));
  ASSERT_EQ(samples.size(), static_cast<std::size_t>(kSide) * kSide) << status_.GetMessage();
  EXPECT_EQ(samples[0], 4810.0F);
  EXPECT_EQ(samples[1], -430.0F);
  EXPECT_EQ(samples[2], 0.0F);
  EXPECT_TRUE(std::isnan(samples.back()));
  // Samples lie on the corners of the degree, so that the pixels reach half a sample beyond it.
  const auto transform = part_.metadata.georeference->transform.value();
  EXPECT_NEAR(transform[0], 7 - 0.5 / 1200, 1e-12);
  EXPECT_NEAR(transform[3], 47 + 0.5 / 1200, 1e-12);
  EXPECT_NEAR(transform[1], 1.0 / 1200, 1e-15);
  EXPECT_EQ(part_.metadata.nodata, -32768);
  EXPECT_NE(part_.metadata.georeference->coordinate_system.find("WGS 84"), std::string::npos);

  Put("N46E008.hgt", bytes.substr(0, 5000));
  ReadFile(At("N46E008.hgt"));
  EXPECT_EQ(status_.GetMessage(),
            "it has 5000 bytes; an SRTM file is named like N46E007.hgt and has 1201 x 1201 or 3601 x 3601 samples of "
            "2 bytes");
}

constexpr const char* kGrid =
    "ncols 3\nnrows 3\nxllcorner 600000\nyllcorner 200000.5\ncellsize 2\nNODATA_value -9999\n"
    "1 2.5 -9999\n4 1e-45 inf\n7,5 8 nan\n";

TEST_F(RastersCodec, ReadsAnAsciiGrid) {
  const float infinity = std::numeric_limits<float>::infinity();
  ExpectSame(ReadFile(Put("a.asc", kGrid), "ascii-grid"), {1, 2.5F, kNan, 4, 1e-45F, infinity, 7.5F, 8, kNan});
  const std::array<double, 6> transform{600000, 2, 0, 200006.5, 0, -2};
  EXPECT_EQ(part_.metadata.georeference->transform, transform);
  EXPECT_EQ(part_.metadata.nodata, -9999);
}

TEST_F(RastersCodec, ReadsRowsOfAnAsciiGridInAnyOrder) {
  std::string text = "ncols 2\nnrows 300\nxllcorner 0\nyllcorner 0\ncellsize 1\n";
  for (int row = 0; row < 300; ++row) text += std::to_string(row) + ' ' + std::to_string(-row) + '\n';
  const auto decoder = Open(Put("a.asc", text), "ascii-grid");
  ASSERT_NE(decoder, nullptr) << status_.GetMessage();
  ExpectSame(ReadRows(*decoder, 298, 300), {298, -298, 299, -299});
  ExpectSame(ReadRows(*decoder, 100, 101), {100, -100});
  ExpectSame(ReadRows(*decoder, 0, 1), {0, 0});
  ExpectSame(ReadRows(*decoder, 129, 130), {129, -129});
}

TEST_F(RastersCodec, TellsWhatIsWrongInAnAsciiGrid) {
  const std::string header = "ncols 2\nnrows 3\nxllcorner 0\nyllcorner 0\ncellsize 1\n";
  ReadFile(Put("a.asc", header + "1 2\n3\n"), "ascii-grid");
  EXPECT_EQ(status_.GetMessage(), "the file is shortened: 1 of 3 rows are there");
  ReadFile(Put("b.asc", header + "1 2\n3 x4\n5 6\n"), "ascii-grid");
  EXPECT_EQ(status_.GetMessage(), "\"x4\" at column 1, row 1 is no number");
  ReadFile(Put("c.asc", header + "1 2\n3 4\n5 1e999\n"), "ascii-grid");
  EXPECT_EQ(status_.GetMessage(), "\"1e999\" at column 1, row 2 is too large");
  ReadFile(Put("d.asc", header + "1 2\n3 4\n5 6\n7"), "ascii-grid");
  EXPECT_EQ(status_.GetMessage(), "more numbers follow its 2 columns x 3 rows");
  // As often as the last row is read, and not where it is not.
  const auto decoder = Open(At("d.asc"), "ascii-grid");
  ASSERT_NE(decoder, nullptr);
  for (int i = 0; i < 2; ++i) {
    ExpectSame(ReadRows(*decoder, 1, 2), {3, 4});
    EXPECT_FALSE(status_.IsError());
    ReadRows(*decoder, 2, 3);
    EXPECT_EQ(status_.GetMessage(), "more numbers follow its 2 columns x 3 rows");
  }
  ExpectSame(ReadFile(Put("e.asc", header + "1 2\n3 4\n5 1e-999"), "ascii-grid"), {1, 2, 3, 4, 5, 0});
}

TEST_F(RastersCodec, WritesAnAsciiGrid) {
  auto plan = MakePlan(2, 2, StoredType::kFloat);
  plan.metadata.georeference = MakeUtm();
  plan.metadata.nodata = -1;
  const std::vector<float> samples{1, 0.1F, kNan, -2.5e10F};
  const auto notes = Write(At("a.asc"), plan, samples.data(), "ascii-grid");
  ASSERT_FALSE(status_.IsError()) << status_.GetMessage();
  EXPECT_EQ(Slurp(At("a.asc")),
            "ncols 2\nnrows 2\nxllcorner 399960\nyllcorner 5299990\ncellsize 25\nNODATA_value -1\n"
            "1.0 0.1\n-1 -2.5e+10\n");
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(notes[0], "the coordinate system is left out: an ASCII grid does not hold it");
  ExpectSame(ReadFile(At("a.asc")), samples);
  EXPECT_EQ(part_.metadata.georeference->transform, plan.metadata.georeference->transform);
}

TEST_F(RastersCodec, ReadsBilWithItsHeaderAndProjection) {
  Put("a.hdr",
      "NROWS 2\nNCOLS 3\nNBANDS 1\nNBITS 16\nBYTEORDER M\nLAYOUT BIL\nPIXELTYPE SIGNEDINT\nULXMAP 7.05\nULYMAP 46.95\n"
      "XDIM 0.1\nYDIM 0.1\nNODATA -32768\n");
  Put("a.prj",
      "GEOGCS[\"GCS_WGS_1984\",DATUM[\"D_WGS_1984\",SPHEROID[\"WGS_1984\",6378137,298.257223563]],"
      "PRIMEM[\"Greenwich\",0],UNIT[\"Degree\",0.017453292519943295]]");
  const std::string bytes("\x12\xca\x00\x00\xff\xff\x80\x00\x00\x01\x00\x02", 12);
  ExpectSame(ReadFile(Put("a.bil", bytes)), {4810, 0, -1, kNan, 1, 2});
  const auto georeference = part_.metadata.georeference.value();
  EXPECT_NEAR((*georeference.transform)[0], 7.0, 1e-12);
  EXPECT_NEAR((*georeference.transform)[3], 47.0, 1e-12);
  EXPECT_NE(georeference.coordinate_system.find("WGS"), std::string::npos);

  Put("a.bil", bytes.substr(0, 8));
  ReadFile(At("a.bil"));
  EXPECT_EQ(status_.GetMessage(), "the file is shortened: 1 of 2 rows are there");
}

std::string MakeMosaic(const std::string& left, const std::string& right) {
  const auto source = [](const std::string& file, int column) {
    return "<SimpleSource><SourceFilename relativeToVRT=\"1\">" + file +
           "</SourceFilename><SourceBand>1</SourceBand><SrcRect xOff=\"0\" yOff=\"0\" xSize=\"2\" ySize=\"2\"/>"
           "<DstRect xOff=\"" +
           std::to_string(column) + "\" yOff=\"0\" xSize=\"2\" ySize=\"2\"/></SimpleSource>";
  };
  return "<VRTDataset rasterXSize=\"4\" rasterYSize=\"2\"><VRTRasterBand dataType=\"Float32\" band=\"1\">" +
         source(left, 0) + source(right, 2) + "</VRTRasterBand></VRTDataset>";
}

TEST_F(RastersCodec, ReadsAVrtOfTwoTilesInAFolderBelow) {
  fs::create_directory(At("tiles"));
  const std::vector<float> left{1, 2, 5, 6};
  const std::vector<float> right{3, 4, 7, 8};
  Write(At("tiles/l.tif"), MakePlan(2, 2, StoredType::kFloat), left.data());
  Write(At("tiles/r.tif"), MakePlan(2, 2, StoredType::kFloat), right.data());
  const fs::path mosaic = Put("m.vrt", MakeMosaic("tiles/l.tif", "tiles/r.tif"));
  ExpectSame(ReadFile(mosaic, "vrt"), {1, 2, 3, 4, 5, 6, 7, 8});

  fs::resize_file(At("tiles/r.tif"), fs::file_size(At("tiles/r.tif")) - 4);
  ReadFile(mosaic, "vrt");
  EXPECT_TRUE(status_.IsError());
  fs::remove(At("tiles/r.tif"));
  ReadFile(mosaic, "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT names \"tiles/r.tif\", which is not there or no plain file");
}

TEST_F(RastersCodec, ReadsNothingOutsideTheFolderOfAVrt) {
  fs::create_directory(At("inner"));
  const std::vector<float> samples{1, 2, 3, 4};
  Write(At("a.tif"), MakePlan(2, 2, StoredType::kFloat), samples.data());
  const std::vector<std::string> names{
      "../a.tif",      At("a.tif").string(), "NETCDF:a.nc:v", "/vsicurl/http://localhost/a", "&lt;VRTDataset/&gt;",
      "/proc/self/mem"};
  for (const std::string& name : names) {
    std::string vrt = MakeMosaic(name, name);
    ReadFile(Put("inner/a.vrt", vrt), "vrt");
    EXPECT_TRUE(status_.GetMessage().starts_with("the VRT names ")) << name << ": " << status_.GetMessage();
    for (std::size_t at = 0; (at = vrt.find("relativeToVRT=\"1\"", at)) != std::string::npos;) vrt.erase(at, 17);
    ReadFile(Put("inner/b.vrt", vrt), "vrt");
    EXPECT_TRUE(status_.GetMessage().starts_with("the VRT names ")) << name << ": " << status_.GetMessage();
  }
  fs::create_symlink(At("a.tif"), At("inner/link.tif"));
  ReadFile(Put("inner/c.vrt", MakeMosaic("link.tif", "link.tif")), "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT names \"link.tif\", which is not in its folder or below");
  // One VRT hides what it names behind another.
  Put("inner/d.vrt", MakeMosaic("../a.tif", "../a.tif"));
  ReadFile(Put("inner/e.vrt", MakeMosaic("d.vrt", "d.vrt")), "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT names \"../a.tif\", which is not in its folder or below");
}

TEST_F(RastersCodec, EndsWithAVrtThatNamesItself) {
  constexpr const char* kProblem = "the VRT names itself, or one below it does";
  ReadFile(Put("a.vrt", MakeMosaic("a.vrt", "a.vrt")), "vrt");
  EXPECT_EQ(status_.GetMessage(), kProblem);
  Put("b.vrt", MakeMosaic("c.vrt", "c.vrt"));
  Put("c.vrt", MakeMosaic("b.vrt", "b.vrt"));
  ReadFile(Put("d.vrt", MakeMosaic("b.vrt", "c.vrt")), "vrt");
  EXPECT_EQ(status_.GetMessage(), kProblem);
}

TEST_F(RastersCodec, ReadsAVrtThatSeveralOthersName) {
  const std::vector<float> samples{1, 2, 3, 4};
  Write(At("a.tif"), MakePlan(2, 2, StoredType::kFloat), samples.data());
  Put("a.vrt", MakeMosaic("a.tif", "a.tif"));
  Put("b.vrt", MakeMosaic("a.vrt", "a.vrt"));
  ReadFile(Put("c.vrt", MakeMosaic("a.vrt", "b.vrt")), "vrt");
  EXPECT_FALSE(status_.IsError()) << status_.GetMessage();
  // A row of them that is longer than may be open at once.
  for (int i = 0; i < 60; ++i) {
    const std::string next = i == 59 ? "a.vrt" : std::to_string(i + 1) + ".vrt";
    Put(std::to_string(i) + ".vrt", MakeMosaic(next, next));
  }
  ReadFile(At("40.vrt"), "vrt");
  EXPECT_FALSE(status_.IsError()) << status_.GetMessage();
  ReadFile(At("0.vrt"), "vrt");
  EXPECT_EQ(status_.GetMessage(), "VRTs name each other more than 30 deep");
}

TEST_F(RastersCodec, TellsOfALinkThatLeadsNowhereOrInACircle) {
  fs::create_symlink("link.tif", At("link.tif"));
  ReadFile(Put("a.vrt", MakeMosaic("link.tif", "link.tif")), "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT names \"link.tif\", which is not in its folder or below");
  fs::create_symlink("none.tif", At("lost.tif"));
  ReadFile(Put("b.vrt", MakeMosaic("lost.tif", "lost.tif")), "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT names \"lost.tif\", which is not there or no plain file");
}

TEST_F(RastersCodec, RunsNoCodeOfAVrt) {
  std::string vrt = MakeMosaic("a.tif", "a.tif");
  vrt.insert(vrt.find("<SimpleSource>"), "<PixelFunctionCode>import os</PixelFunctionCode>");
  ReadFile(Put("a.vrt", vrt), "vrt");
  EXPECT_EQ(status_.GetMessage(), "the VRT holds code, which is not run");
}

TEST_F(RastersCodec, ReadsThePagesOfATiffAsParts) {
  // Two directories: the second is the first file's with its offsets moved behind it.
  const std::string first = HandmadeTiff::Make(2, 1, 1, 1, {std::string("\x00\xff", 2)});
  const std::string second = HandmadeTiff::Make(1, 1, 1, 1, {std::string("\x33", 1)});
  std::string file = first + second;
  const auto at = [&](std::size_t position) {
    std::uint32_t number = 0;
    std::memcpy(&number, file.data() + position, 4);
    return number;
  };
  const auto moved = [&](std::size_t position) {
    file.replace(position, 4, HandmadeTiff::Number(at(position) + first.size(), 4));
  };
  file.replace(first.size() - 4, 4, HandmadeTiff::Number(at(first.size() + 4) + first.size(), 4));
  // The sixth tag of the second directory holds where its only strip is.
  moved(first.size() + at(first.size() + 4) + 2 + 5 * 12 + 8);
  const auto decoder = Open(Put("pages.tif", file), "geotiff");
  ASSERT_NE(decoder, nullptr) << status_.GetMessage();
  ASSERT_EQ(decoder->GetDescription().parts.size(), 2U);
  ExpectSame(ReadAll(*decoder, SampleScale::kAuto, 1), {0.2F});
  ExpectSame(ReadAll(*decoder, SampleScale::kStored, 0), {0, 255});
}

TEST_F(RastersCodec, TakesFoldersOfAnyName) {
  fs::create_directories(At("NETCDF:x"));
  const std::vector<float> samples{1, 2};
  Write(At("NETCDF:x/a.tif"), MakePlan(2, 1, StoredType::kFloat), samples.data());
  ExpectSame(ReadFile(At("NETCDF:x/a.tif")), samples);
  const fs::path before = fs::current_path();
  fs::current_path(folder_);
  ExpectSame(ReadFile("NETCDF:x/a.tif"), samples);
  ReadFile("GTIFF_DIR:1:NETCDF:x/a.tif");
  EXPECT_EQ(status_.GetMessage(), "it is no plain file");
  fs::current_path(before);
}

}  // namespace
}  // namespace ScEng

// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/RastersTesting.h"

namespace ScEng {
namespace {

TEST_F(RastersCodec, KeepsTheCornersThatGdalinfoSees) {
  const std::vector<float> samples(4 * 3, 1.0F);
  auto plan = MakePlan(4, 3, StoredType::kFloat);
  plan.metadata.georeference = MakeUtm();
  plan.metadata.value_unit = "metre";
  const auto notes = Write(At("a.tif"), plan, samples.data());
  EXPECT_EQ(notes, std::vector<std::string>());
  const auto info = RunGdalinfo(At("a.tif"));
  EXPECT_EQ(info["cornerCoordinates"]["upperLeft"], (nlohmann::json{399960.0, 5300040.0}));
  EXPECT_EQ(info["cornerCoordinates"]["lowerRight"], (nlohmann::json{400060.0, 5299965.0}));
  EXPECT_NE(info["coordinateSystem"]["wkt"].get<std::string>().find("32632"), std::string::npos);
  EXPECT_EQ(info["bands"][0]["unit"], "metre");
  ReadFile(At("a.tif"));
  ASSERT_TRUE(part_.metadata.georeference);
  EXPECT_EQ(part_.metadata.georeference->transform, plan.metadata.georeference->transform);
  EXPECT_EQ(part_.metadata.georeference->coordinate_system.substr(0, 32), "PROJCRS[\"WGS 84 / UTM zone 32N\",");
  EXPECT_EQ(part_.metadata.value_unit, "metre");
  // What was read is written again as it is.
  plan.metadata.georeference = part_.metadata.georeference;
  Write(At("b.tif"), plan, samples.data());
  ReadFile(At("b.tif"));
  EXPECT_EQ(part_.metadata.georeference, plan.metadata.georeference);
}

TEST_F(RastersCodec, TellsOfACoordinateSystemThatIsNone) {
  const float sample = 1;
  auto plan = MakePlan(1, 1, StoredType::kFloat);
  plan.metadata.georeference = Georeference{"north of here", std::nullopt};
  const auto notes = Write(At("a.tif"), plan, &sample);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(notes[0], "the coordinate system is left out, for it is no WKT that is understood");
  EXPECT_FALSE(status_.IsError());
}

TEST_F(RastersCodec, KeepsTextsResolutionBlocksAndHeaders) {
  const std::vector<float> samples{1, 2, 3, 4};
  auto plan = MakePlan(2, 2, StoredType::kFloat);
  ImageMetadata& metadata = plan.metadata;
  metadata.entries = {{"ImageDescription", std::string("Ridge <north> & \"south\"")},
                      {"Artist", std::string("A. Surveyor")},
                      {"DateTime", std::string("2001:02:03 04:05:06")},
                      {"AREA_OR_POINT", std::string("Area")},
                      {"Weather", std::string("snow = much")},
                      {"dc:title", std::string("Matterhorn")},
                      {"Flight", std::vector<std::int64_t>{3, -4}}};
  metadata.resolution = {300, 72.5};
  metadata.resolution_unit = "cm";
  metadata.xmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>";
  metadata.icc = {0, 1, 2, 0, 255, 61};
  StoredHeader header;
  header.mode = 2;
  header.range = {0.1F, 1234.5F};
  header.pin = {-3, 7};
  header.pivot = {0.25F, -1e-30F};
  plan.stored_headers = {{"", header}};
  Write(At("a.tif"), plan, samples.data());
  ASSERT_FALSE(status_.IsError()) << status_.GetMessage();
  ReadFile(At("a.tif"));
  EXPECT_EQ(part_.metadata.resolution, metadata.resolution);
  EXPECT_EQ(part_.metadata.resolution_unit, "cm");
  EXPECT_EQ(part_.metadata.xmp, metadata.xmp);
  EXPECT_EQ(part_.metadata.icc, metadata.icc);
  EXPECT_EQ(part_.stored_headers, plan.stored_headers);
  metadata.entries.back().value = std::string("3, -4");
  for (const MetadataEntry& entry : metadata.entries) {
    // Where the image lies nowhere on the ground there is nothing for this to say.
    if (entry.name == "AREA_OR_POINT") continue;
    const MetadataEntry* found = part_.metadata.Find(entry.name);
    ASSERT_NE(found, nullptr) << entry.name;
    EXPECT_EQ(found->value, entry.value) << entry.name;
  }
  const auto info = RunGdalinfo(At("a.tif"));
  EXPECT_EQ(info["metadata"][""]["TIFFTAG_ARTIST"], "A. Surveyor");
  EXPECT_EQ(info["metadata"]["value"]["mode"], "2");
  EXPECT_EQ(info["metadata"]["value"]["pin"], "-3, 7");
}

TEST_F(RastersCodec, KeepsWhereInAPixelItsSampleLies) {
  const std::vector<float> samples{1, 2, 3, 4};
  auto plan = MakePlan(2, 2, StoredType::kFloat);
  plan.metadata.georeference = MakeUtm();
  plan.metadata.entries = {{"AREA_OR_POINT", std::string("Point")}};
  Write(At("a.tif"), plan, samples.data());
  ReadFile(At("a.tif"));
  ASSERT_NE(part_.metadata.Find("AREA_OR_POINT"), nullptr);
  EXPECT_EQ(std::get<std::string>(part_.metadata.Find("AREA_OR_POINT")->value), "Point");
  EXPECT_EQ(part_.metadata.georeference->transform, plan.metadata.georeference->transform);
}

}  // namespace
}  // namespace ScEng

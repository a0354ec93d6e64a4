// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/XmpPacket.h"

#include <gtest/gtest.h>

#include <random>

namespace ScEng {
namespace {

std::string Wrap(const std::string& inside) {
  return "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
         "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>" +
         inside + "</rdf:RDF></x:xmpmeta>\n   <?xpacket end='w'?>";
}

constexpr const char* kSpaces =
    " xmlns:tiff='http://ns.adobe.com/tiff/1.0/' xmlns:exif='http://ns.adobe.com/exif/1.0/'"
    " xmlns:xmp='http://ns.adobe.com/xap/1.0/'";

std::string Clean(std::string packet) {
  RemoveSampleDescription(packet);
  return packet;
}

TEST(XmpPacket, LosesSizesAndOrientationAsElements) {
  const std::string start = "<rdf:Description rdf:about=''" + std::string(kSpaces) + ">";
  EXPECT_EQ(Clean(Wrap(start + "<tiff:Orientation>6</tiff:Orientation><tiff:Make>Acme</tiff:Make>"
                               "<tiff:BitsPerSample><rdf:Seq><rdf:li>8</rdf:li></rdf:Seq></tiff:BitsPerSample>"
                               "<exif:PixelXDimension/><xmp:Thumbnails><rdf:Alt><rdf:li>AAAA</rdf:li></rdf:Alt>"
                               "</xmp:Thumbnails><xmp:Rating>4</xmp:Rating></rdf:Description>")),
            Wrap(start + "<tiff:Make>Acme</tiff:Make><xmp:Rating>4</xmp:Rating></rdf:Description>"));
}

TEST(XmpPacket, LosesThemAsAttributesInEitherKindOfQuotes) {
  EXPECT_EQ(Clean(Wrap("<rdf:Description" + std::string(kSpaces) +
                       "\n  tiff:Orientation=\"6\"\n  tiff:Make='A > B'\n  exif:PixelYDimension='48'/>")),
            Wrap("<rdf:Description" + std::string(kSpaces) + "\n  tiff:Make='A > B'/>"));
}

TEST(XmpPacket, IsReadByNamespacesRatherThanByPrefixes) {
  EXPECT_EQ(Clean(Wrap("<rdf:Description><t:Orientation xmlns:t='http://ns.adobe.com/tiff/1.0/'>6</t:Orientation>"
                       "<tiff:Orientation xmlns:tiff='http://example.com/'>7</tiff:Orientation></rdf:Description>")),
            Wrap("<rdf:Description><tiff:Orientation xmlns:tiff='http://example.com/'>7</tiff:Orientation>"
                 "</rdf:Description>"));
}

TEST(XmpPacket, KeepsWhatDescribesOtherPictures) {
  const std::string packet =
      Wrap("<rdf:Description" + std::string(kSpaces) +
           " xmlns:e='http://example.com/'><e:Source rdf:parseType='Resource'>"
           "<tiff:Orientation>6</tiff:Orientation></e:Source><!-- <tiff:Orientation>6</tiff:Orientation> -->"
           "</rdf:Description>");
  EXPECT_EQ(Clean(packet), packet);
}

TEST(XmpPacket, StaysAsItIsWhereItIsNoXml) {
  for (const std::string packet : {"", "<", "<a", "<a b", "<a b='", "text", "<!DOCTYPE a><a/>", "</a>"}) {
    EXPECT_EQ(Clean(packet), packet);
  }
}

TEST(XmpPacket, TakesTextsAsPropertiesAndLists) {
  std::string packet = Wrap("<rdf:Description rdf:about=\"it's\"/>");
  ASSERT_TRUE(AddTexts({{"Comment", "a"}, {"creation time", "<1 & 2>"}, {"Comment", "b\x01"}}, packet));
  EXPECT_EQ(packet, Wrap("<rdf:Description rdf:about=\"it's\"/>"
                         "<rdf:Description xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
                         "rdf:about=\"it's\" xmlns:text='urn:value:text/1.0/'>"
                         "<text:Comment><rdf:Seq><rdf:li>a</rdf:li><rdf:li>b </rdf:li></rdf:Seq></text:Comment>"
                         "<text:creationTime>&lt;1 &amp; 2&gt;</text:creationTime></rdf:Description>"));
}

TEST(XmpPacket, GivesATextANameOfItsOwn) {
  std::string packet;
  ASSERT_TRUE(AddTexts({{"1 a", "x"}, {"\xC3\xA9", "y"}}, packet));
  ASSERT_TRUE(AddTexts({{"1 a", "z"}}, packet));
  EXPECT_NE(packet.find("<text:_1A>x</text:_1A><text:Text>y</text:Text>"), std::string::npos) << packet;
  EXPECT_NE(packet.find("<text:_1A2>z</text:_1A2>"), std::string::npos) << packet;
}

TEST(XmpPacket, ThatIsDamagedTakesNoTexts) {
  for (const std::string bad :
       {"text", "<a/>", "<rdf:RDF>", "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'/>"}) {
    std::string packet = bad;
    EXPECT_FALSE(AddTexts({{"a", "b"}}, packet));
    EXPECT_EQ(packet, bad);
  }
}

TEST(XmpPacket, GrowsByNoMoreThanItsBound) {
  std::string packet;
  const NamedTexts texts{{"a", std::string(100, '&')}, {"a", "b"}, {"a longer name", ""}};
  std::size_t most = kEmptyPacketSize;
  for (const auto& text : texts) most += BoundSize(text);
  ASSERT_TRUE(AddTexts(texts, packet));
  EXPECT_LE(packet.size(), most);
}

TEST(XmpPacket, TakesAnyDamage) {
  const std::string good = Wrap("<rdf:Description" + std::string(kSpaces) +
                                " tiff:Orientation='6'><tiff:ImageWidth>64</tiff:ImageWidth></rdf:Description>");
  std::mt19937 random(7);
  for (int i = 0; i < 20000; ++i) {
    std::string packet = good;
    for (int times = 0; times < 3; ++times) {
      const std::size_t at = random() % packet.size();
      if (random() % 2 == 0) packet[at] = "<>/='\" :a\0"[random() % 10];
      if (random() % 4 == 0) packet.erase(at, random() % 9);
      if (packet.empty()) packet = "<";
    }
    EXPECT_LE(Clean(packet).size(), packet.size());
  }
}

TEST(XmpPacket, OfManyTagsStaysAsItIs) {
  std::string deep;
  for (int i = 0; i < 1000000; ++i) deep += "<a>";
  EXPECT_EQ(Clean(deep), deep);
  std::string wide = Wrap("<rdf:Description" + std::string(kSpaces) + ">");
  for (int i = 0; i < 300000; ++i) wide += "<a xmlns:b='c' b:d='e'/>";
  EXPECT_EQ(Clean(wide), wide);
}

}  // namespace
}  // namespace ScEng

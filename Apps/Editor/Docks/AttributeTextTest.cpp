// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/AttributeText.h"

#include <gtest/gtest.h>

#include <QProcess>

#include "Apps/Editor/Docks/Presets.h"
#include "Tests/Support/EditTesting.h"

namespace {

using Testing::WriteText;

TEST(QuoteForShell, IsReadByAShellAsItWas) {
  for (const char* text :
       {"", "plain", "two words", "it's", "$HOME `x` \"y\" \\", "a=b;c|d&e", "new\nline", "*?[!]", "ä€"}) {
    QProcess shell;
    shell.start("/bin/sh", {"-c", "printf %s " + QuoteForShell(QString::fromUtf8(text))});
    ASSERT_TRUE(shell.waitForFinished());
    EXPECT_EQ(shell.readAllStandardOutput().toStdString(), text);
  }
  EXPECT_EQ(QuoteForShell("low=0.5").toStdString(), "low=0.5");
}

TEST(ShowValue, IsWrittenAsOnTheCommandLine) {
  EXPECT_EQ(ShowValue(PlugValue(0.1)).toStdString(), "0.1");
  EXPECT_EQ(ShowValue(PlugValue(-3.0)).toStdString(), "-3");
  EXPECT_EQ(ShowValue(PlugValue(true)).toStdString(), "true");
  EXPECT_EQ(ShowValue(PlugValue(ScEng::Rgbo{1.0, 0.5, 0.0, 0.25})).toStdString(), "1,0.5,0,0.25");
  EXPECT_EQ(ShowValue(PlugValue(ScEng::Frame{0.0, -1.0, 640.0, 0.001})).toStdString(), "0,-1,640,0.001");
}

class AttributeTextTest : public Testing::EditSessionTest {};

TEST_F(AttributeTextTest, OptionsLeaveOutWhatIsFedAndNamePathsInFull) {
  EXPECT_FALSE(session_->SetAttributes({{"b.constant", PlugValue(4.0)}}).IsError());
  const Node& fed = *session_->GetDocument().FindNode("b");
  EXPECT_EQ(MakeSetOptions(fed, "b"), std::vector<QString>());
  EXPECT_FALSE(session_->AddNode({{10, 16, 5}, "my image", {}}).IsError());
  EXPECT_FALSE(session_->SetAttribute("my image.path", "in/coast.png").IsError());
  const Node& reader = *session_->GetDocument().FindNode("my image");
  const std::string path = (folder_ / "in/coast.png").string();
  EXPECT_EQ(MakeSetOptions(reader, "my image"),
            std::vector<QString>{QString::fromStdString("--set 'my image.path=" + path + "'")});
}

TEST_F(AttributeTextTest, PresetsLeaveOutWhatDoesNotFit) {
  const Presets presets("ImageValueClampNode", QString::fromStdString(folder_.Path().string()));
  const Node& clamp = *session_->GetDocument().FindNode("d");
  std::filesystem::create_directory(folder_ / "ImageValueClampNode");
  WriteText(folder_ / "ImageValueClampNode" / "old.json",
            R"({"type": "ImageValueClampNode", "attributes": {"low": 2, "high": "x", "clamp": "upside", "gone": 1}})");
  std::vector<ScEng::AttributeValue> values;
  std::vector<std::string> notes;
  EXPECT_EQ(presets.GetNames(), QStringList{"old"});
  EXPECT_FALSE(presets.Load("old", clamp, "d", values, notes).IsError());
  ASSERT_EQ(values.size(), 1U);
  EXPECT_EQ(values[0].attribute, "d.low");
  EXPECT_EQ(values[0].value.GetNumber(), 2.0);
  EXPECT_EQ(notes.size(), 3U);
}

TEST_F(AttributeTextTest, PresetsRefuseForeignAndBrokenFiles) {
  const Presets presets("ImageValueClampNode", QString::fromStdString(folder_.Path().string()));
  const Node& clamp = *session_->GetDocument().FindNode("d");
  std::filesystem::create_directory(folder_ / "ImageValueClampNode");
  WriteText(folder_ / "ImageValueClampNode" / "broken.json", "{\"type\": ");
  WriteText(folder_ / "ImageValueClampNode" / "other.json", R"({"type": "ImageValueAddNode", "attributes": {}})");
  std::vector<ScEng::AttributeValue> values;
  std::vector<std::string> notes;
  EXPECT_TRUE(Testing::Contains(presets.Load("broken", clamp, "d", values, notes).GetMessage(), "no JSON"));
  EXPECT_TRUE(Testing::Contains(presets.Load("other", clamp, "d", values, notes).GetMessage(), "ImageValueClampNode"));
  EXPECT_TRUE(presets.Load("missing", clamp, "d", values, notes).IsError());
  EXPECT_TRUE(presets.Save("  ", clamp).IsError());
  EXPECT_TRUE(presets.Save(QString(101, u'x'), clamp).IsError());
  EXPECT_TRUE(values.empty());
  // A name cannot lead out of the folder.
  EXPECT_FALSE(presets.Save("../../out", clamp).IsError());
  EXPECT_TRUE(presets.GetNames().contains("../../out"));
  EXPECT_FALSE(std::filesystem::exists(folder_.Path().parent_path() / "out.json"));
}

}  // namespace

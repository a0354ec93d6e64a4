// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/SaveAsTo.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Apps/Editor/Files/DocumentPath.h"
#include "Apps/Editor/Files/MissingInputs.h"
#include "Host/Nodes/HostNodes.h"
#include "Tests/Support/EditTesting.h"

namespace {

namespace fs = std::filesystem;
using Testing::Save;
using Testing::WriteText;

TEST(MakeDocumentPath, IsRelativeInAndBesideTheFolder) {
  EXPECT_EQ(MakeDocumentPath("/home/me/project/out/a.png", "/home/me/project"), "out/a.png");
  EXPECT_EQ(MakeDocumentPath("/home/me/out/a.png", "/home/me/project"), "../out/a.png");
  EXPECT_EQ(MakeDocumentPath("/data/a.png", "/home/me/project"), "/data/a.png");
}

/// A project: a document in a folder, images in it, beside it and elsewhere.
class SaveAsToTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* folder : {"project/in", "project/sub", "project2", "images", "far/away/place"}) {
      fs::create_directories(folder_ / folder);
    }
    WriteText(folder_ / "project/graph.json", Testing::Quoted(R"({
  'format': 'value-graph',
  'version': 2,
  'nodes': [
    {'id': 'below', 'type': 'ImageReaderNode', 'attributes': {'path': 'in/a.png'}},
    {'id': 'beside', 'type': 'ImageReaderNode', 'attributes': {'path': '..\\images\\b.png'}},
    {'id': 'fixed', 'type': 'ImageReaderNode', 'attributes': {'path': '/data/c.png'}},
    {'id': 'none', 'type': 'ImageReaderNode'},
    {'id': 'writer', 'type': 'ImageWriterNode', 'attributes': {'path': 'w.png'}},
    {'id': 'text', 'type': 'TextNode', 'attributes': {'value': 'in/a.png'}}
  ],
  'connections': [],
  'outputs': [
    {'from': 'below.image', 'path': 'out.png'},
    {'from': 'beside.image', 'path': '/data/out.png'}
  ]
}
)"));
    Open();
  }
  [[nodiscard]] std::vector<MissingInput> FindMissing() const {
    return KeepMissing(ListInputs(session_->GetDocument()));
  }
  void Open() {
    ScEng::Findings findings;
    session_ =
        ScEng::EditSession::Open(Testing::GetCatalog(), folder_ / "project/graph.json", folder_ / "state", findings);
    ASSERT_NE(session_, nullptr) << findings.errors[0];
  }
  [[nodiscard]] std::string Path(const char* id) const {
    return session_->GetDocument().FindNode(id)->GetAttribute("path")->GetValue().GetText();
  }
  [[nodiscard]] std::string Full(const char* path) const { return (folder_ / path).string(); }

  Testing::TemporaryFolder folder_;
  std::unique_ptr<ScEng::EditSession> session_;
};

TEST_F(SaveAsToTest, LeavesPathsAloneInTheSameFolder) {
  const std::string before = Save(session_->GetDocument());
  EXPECT_FALSE(SaveAsTo(*session_, folder_ / "project/./other.json").IsError());
  EXPECT_EQ(Save(session_->GetDocument()), before);
  EXPECT_TRUE(session_->GetHistory().empty());
  EXPECT_EQ(session_->GetFile(), folder_ / "project/./other.json");
}

TEST_F(SaveAsToTest, KeepsWhatPathsMeanInAFolderBelow) {
  EXPECT_FALSE(SaveAsTo(*session_, folder_ / "project/sub/graph.json").IsError());
  EXPECT_EQ(Path("below"), "../in/a.png");
  // Two steps up: the path says where it is instead.
  EXPECT_EQ(Path("beside"), Full("images/b.png"));
  EXPECT_EQ(Path("fixed"), "/data/c.png");
  EXPECT_EQ(Path("none"), "");
  EXPECT_EQ(Path("writer"), "../w.png");
  EXPECT_EQ(session_->GetDocument().GetOutputs()[0].path, "../out.png");
  EXPECT_EQ(session_->GetDocument().GetOutputs()[1].path, "/data/out.png");
  // It is no path.
  EXPECT_EQ(session_->GetDocument().FindNode("text")->GetAttribute("value")->GetValue().GetText(), "in/a.png");
  EXPECT_EQ(session_->GetHistory().size(), 1U);
  EXPECT_FALSE(session_->IsModified());
  EXPECT_EQ(session_->GetDocument().GetInputFiles().at("below").lexically_normal(), folder_ / "project/in/a.png");
  // What was saved means the same.
  ScEng::Findings findings;
  const auto again =
      ScEng::EditSession::Open(Testing::GetCatalog(), folder_ / "project/sub/graph.json", folder_ / "state", findings);
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(again->GetDocument().GetInputFiles().at("below").lexically_normal(), folder_ / "project/in/a.png");
}

TEST_F(SaveAsToTest, KeepsWhatPathsMeanInAFolderBesideAndFarAway) {
  EXPECT_FALSE(SaveAsTo(*session_, folder_ / "project2/graph.json").IsError());
  EXPECT_EQ(Path("below"), "../project/in/a.png");
  EXPECT_EQ(Path("beside"), "../images/b.png");
  EXPECT_FALSE(SaveAsTo(*session_, folder_ / "far/away/place/graph.json").IsError());
  EXPECT_EQ(Path("below"), Full("project/in/a.png"));
  EXPECT_EQ(Path("beside"), Full("images/b.png"));
}

TEST_F(SaveAsToTest, NewDocumentsWriteBesideTheFileThatTheyAreGiven) {
  session_ = std::make_unique<ScEng::EditSession>(Testing::GetCatalog(), folder_ / "state");
  EXPECT_FALSE(session_->AddNode({ScEng::kImageReaderType, "below", {}}).IsError());
  EXPECT_FALSE(session_->SetAttribute("below.path", "here.png").IsError());
  ScEng::DocumentOutput output;
  output.from = "below.image";
  output.path = "out.png";
  EXPECT_FALSE(session_->AddOutput(output).IsError());
  EXPECT_FALSE(SaveAsTo(*session_, folder_ / "project/new.json").IsError());
  EXPECT_EQ(session_->GetDocument().GetInputFiles().at("below").lexically_normal(), fs::current_path() / "here.png");
  EXPECT_EQ(session_->GetDocument().GetOutputs()[0].path, "out.png");
}

TEST_F(SaveAsToTest, ChangesNothingWhereItCannotSave) {
  EXPECT_FALSE(session_->SetNote("none", "a note").IsError());
  EXPECT_FALSE(session_->Undo().IsError());
  const std::string before = Save(session_->GetDocument());
  const ScEng::Status status = SaveAsTo(*session_, folder_ / "missing/graph.json");
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Testing::Contains(status.GetMessage(), "missing/graph.json")) << status.GetMessage();
  EXPECT_EQ(Save(session_->GetDocument()), before);
  EXPECT_EQ(session_->GetFile(), folder_ / "project/graph.json");
  // What was undone can still be redone.
  EXPECT_FALSE(session_->Redo().IsError());
  EXPECT_EQ(session_->GetDocument().GetNote("none"), "a note");
}

TEST_F(SaveAsToTest, TakesPathsBackWhereTheDocumentItselfCannotBeSaved) {
  // No document can hold it, and only writing it tells.
  session_->GetDocument().FindNode("text")->GetAttribute("value")->SetString("\xff", false);
  EXPECT_TRUE(SaveAsTo(*session_, folder_ / "project2/graph.json").IsError());
  EXPECT_EQ(Path("below"), "in/a.png");
  EXPECT_EQ(session_->GetDocument().GetOutputs()[0].path, "out.png");
  EXPECT_FALSE(fs::exists(folder_ / "project2/graph.json"));
}

// ---- Missing files ----

TEST_F(SaveAsToTest, MissingFilesAreThoseOfReadersThatAreSwitchedOn) {
  const std::vector<MissingInput> missing = FindMissing();
  ASSERT_EQ(missing.size(), 3U);
  EXPECT_EQ(missing[0], (MissingInput{"below", "path", folder_ / "project" / "in/a.png"}));
  EXPECT_EQ(missing[2].id, "fixed");
  WriteText(folder_ / "project/in/a.png", "");
  EXPECT_FALSE(session_->SetEnabled({"fixed"}, false).IsError());
  ASSERT_EQ(FindMissing().size(), 1U);
}

TEST_F(SaveAsToTest, LocatingAFileFindsTheOthersThatMovedWithIt) {
  WriteText(folder_ / "project2/first.png", "");
  WriteText(folder_ / "project2/b.png", "");
  const std::vector<MissingInput> missing = FindMissing();
  EXPECT_FALSE(LocateInput(*session_, missing[0], missing, folder_ / "project2/first.png").IsError());
  EXPECT_EQ(Path("below"), "../project2/first.png");
  EXPECT_EQ(Path("beside"), "../project2/b.png");
  EXPECT_EQ(Path("fixed"), "/data/c.png");
  EXPECT_EQ(session_->GetHistory(), std::vector<std::string>{"Locate files of 2 readers"});
  EXPECT_EQ(FindMissing().size(), 1U);
}

}  // namespace

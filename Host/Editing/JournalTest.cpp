// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Editing/EditSession.h"
#include "Host/Editing/JournalText.h"
#include "Host/Editing/Journals.h"
#include "Tests/Support/EditTesting.h"

namespace {

using ScEng::EditSession;
using ScEng::Findings;
using ScEng::FoundJournal;
using ScEng::JournalHead;
using std::chrono::milliseconds;
using Testing::Contains;
using Testing::EditSessionTest;
using Testing::ReadText;
using Testing::Save;
using Testing::WriteText;

using Lines = std::vector<std::string>;

/// Noon of some day.
const EditSession::Time kNoon{std::chrono::hours(24 * 20000 + 12)};

/// A process that was there and is gone.
ScEng::ProcessIdentity MakeGoneProcess() {
  ScEng::ProcessIdentity gone = ScEng::GetOwnIdentity();
  gone.start += "0";
  return gone;
}

class JournalTest : public EditSessionTest {
 protected:
  [[nodiscard]] std::filesystem::path State() const { return folder_ / "state"; }
  [[nodiscard]] std::vector<FoundJournal> Find() {
    notes_.clear();
    return ScEng::FindJournals(State(), notes_);
  }
  void Change(const std::string& note) { EXPECT_FALSE(session_->SetNote("a", note).IsError()); }
  /// As if the process that wrote a journal were gone, and another one had its number.
  static void EndWriter(const std::filesystem::path& journal) {
    const std::string text = ReadText(journal);
    JournalHead head;
    std::string_view document;
    ASSERT_FALSE(ScEng::ParseJournalText(text, head, document).IsError());
    EXPECT_TRUE(ScEng::IsRunning(head.writer));
    head.writer = MakeGoneProcess();
    WriteText(journal, ScEng::MakeJournalText(head, document));
  }

  Lines notes_;
};

TEST_F(JournalTest, IsThereWithinTwoSecondsOfEachChange) {
  EXPECT_FALSE(session_->Tick(kNoon).IsError());
  EXPECT_TRUE(Find().empty());
  Change("1");
  EXPECT_FALSE(session_->Tick(kNoon + milliseconds(500)).IsError());
  std::vector<FoundJournal> found = Find();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].document, folder_ / "graph.json");
  EXPECT_EQ(found[0].time, kNoon + milliseconds(500));
  EXPECT_EQ(found[0].file.parent_path(), folder_.Path());
  EXPECT_TRUE(found[0].is_in_use);
  EXPECT_FALSE(found[0].is_from_elsewhere);
  // Nobody else may read it.
  struct stat status {};
  ASSERT_EQ(stat(found[0].file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  Change("2");
  EXPECT_FALSE(session_->Tick(kNoon + milliseconds(1000)).IsError());
  EXPECT_EQ(Find()[0].time, kNoon + milliseconds(500));
  EXPECT_FALSE(session_->Tick(kNoon + milliseconds(1500)).IsError());
  EXPECT_EQ(Find()[0].time, kNoon + milliseconds(1500));
  EXPECT_TRUE(Contains(ReadText(Find()[0].file), "\"note\": \"2\""));
  // Nothing has changed, so nothing is written.
  EXPECT_FALSE(session_->Tick(kNoon + milliseconds(9000)).IsError());
  EXPECT_EQ(Find()[0].time, kNoon + milliseconds(1500));
  // A clock that was set back stops nothing.
  Change("3");
  EXPECT_FALSE(session_->Tick(kNoon - std::chrono::hours(5)).IsError());
  EXPECT_TRUE(Contains(ReadText(Find()[0].file), "\"note\": \"3\""));
  EXPECT_EQ(Find().size(), 1U);
}

TEST_F(JournalTest, GoesWhenTheDocumentIsSavedOrClosed) {
  const Lines before = folder_.List();
  Change("1");
  EXPECT_FALSE(session_->Tick(kNoon).IsError());
  EXPECT_EQ(folder_.List().size(), before.size() + 2);
  EXPECT_FALSE(session_->Save().IsError());
  EXPECT_TRUE(Find().empty());
  Change("2");
  EXPECT_FALSE(session_->Tick(kNoon + milliseconds(2000)).IsError());
  EXPECT_EQ(Find().size(), 1U);
  // Back where it was saved there is nothing to lose.
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_FALSE(session_->Tick(kNoon + milliseconds(4000)).IsError());
  EXPECT_TRUE(Find().empty());
  Change("3");
  EXPECT_FALSE(session_->Tick(kNoon + milliseconds(6000)).IsError());
  session_->Close();
  EXPECT_TRUE(Find().empty());
  EXPECT_EQ(folder_.List(), (Lines{"graph.json", "state"}));
  EXPECT_TRUE(std::filesystem::is_empty(State() / "journals"));
}

TEST_F(JournalTest, BringsBackWhatAnEndedProgramLeft) {
  Change("unsaved");
  EXPECT_FALSE(session_->RemoveNodes({"b"}).IsError());
  const std::string edited = Save(session_->GetDocument());
  EXPECT_FALSE(session_->Tick(kNoon).IsError());
  session_.reset();
  ASSERT_EQ(Find().size(), 1U);
  Findings findings;
  // Another program that runs has the document.
  EXPECT_EQ(EditSession::Recover(Testing::GetCatalog(), Find()[0], State(), findings), nullptr);
  ASSERT_EQ(findings.errors.size(), 1U);
  EXPECT_TRUE(Contains(findings.errors[0], "still running"));
  EndWriter(Find()[0].file);
  const FoundJournal left = Find()[0];
  EXPECT_FALSE(left.is_in_use);
  findings = {};
  session_ = EditSession::Recover(Testing::GetCatalog(), left, State(), findings);
  ASSERT_NE(session_, nullptr) << findings.errors[0];
  EXPECT_EQ(Save(session_->GetDocument()), edited);
  EXPECT_EQ(session_->GetFile(), folder_ / "graph.json");
  EXPECT_TRUE(session_->IsModified());
  EXPECT_TRUE(session_->GetHistory().empty());
  // The journal is this process's from now on.
  EXPECT_FALSE(session_->Tick(kNoon + milliseconds(10)).IsError());
  ASSERT_EQ(Find().size(), 1U);
  EXPECT_EQ(Find()[0].file, left.file);
  EXPECT_TRUE(Find()[0].is_in_use);
  EXPECT_FALSE(session_->Save().IsError());
  EXPECT_TRUE(Find().empty());
  EXPECT_EQ(ReadText(folder_ / "graph.json"), edited);
  EXPECT_EQ(folder_.List(), (Lines{"graph.json", "state"}));
}

TEST_F(JournalTest, BringsBackDocumentsWithoutAFile) {
  auto session = std::make_unique<EditSession>(Testing::GetCatalog(), State());
  EXPECT_FALSE(session->AddNode({Testing::kAdd, "e", {}}).IsError());
  EXPECT_FALSE(session->Tick(kNoon).IsError());
  const std::string edited = Save(session->GetDocument());
  session.reset();
  ASSERT_EQ(Find().size(), 1U);
  EXPECT_EQ(Find()[0].document, "");
  EXPECT_EQ(Find()[0].file.parent_path(), State() / "journals");
  EndWriter(Find()[0].file);
  Findings findings;
  session = EditSession::Recover(Testing::GetCatalog(), Find()[0], State(), findings);
  ASSERT_NE(session, nullptr);
  EXPECT_EQ(Save(session->GetDocument()), edited);
  EXPECT_EQ(session->GetFile(), "");
  ScEng::DiscardJournal(Find()[0]);
  EXPECT_TRUE(Find().empty());
}

TEST_F(JournalTest, AKilledProcessLeavesAJournal) {
  const pid_t child = fork();
  if (child == 0) {
    const bool is_written = !session_->SetNote("a", "killed").IsError() && !session_->Tick(kNoon).IsError();
    if (is_written) static_cast<void>(raise(SIGKILL));
    _exit(1);
  }
  int status = 0;
  // Until its parent has asked for it, the process is there and not there.
  siginfo_t info{};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT), 0);
  ASSERT_EQ(Find().size(), 1U);
  EXPECT_FALSE(Find()[0].is_in_use);
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_FALSE(Find()[0].is_in_use);
  Findings findings;
  const auto recovered = EditSession::Recover(Testing::GetCatalog(), Find()[0], State(), findings);
  ASSERT_NE(recovered, nullptr);
  EXPECT_EQ(recovered->GetDocument().GetNote("a"), "killed");
}

TEST_F(JournalTest, OnesOfOneDocumentAreFoundBesideIt) {
  Change("1");
  EXPECT_FALSE(session_->Tick(kNoon).IsError());
  Findings findings;
  const auto other = EditSession::Open(Testing::GetCatalog(), folder_ / "graph.json", State(), findings);
  EXPECT_FALSE(other->SetNote("a", "2").IsError());
  EXPECT_FALSE(other->Tick(kNoon + milliseconds(1)).IsError());
  EXPECT_FALSE(other->SaveAs(folder_ / "graph.json.b").IsError());
  EXPECT_FALSE(other->SetNote("a", "3").IsError());
  EXPECT_FALSE(other->Tick(kNoon + milliseconds(5000)).IsError());
  // The newest first.
  ASSERT_EQ(Find().size(), 2U);
  EXPECT_EQ(Find()[0].document, folder_ / "graph.json.b");
  const auto found = ScEng::FindJournalsOf(folder_ / "graph.json", notes_);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].time, kNoon);
  EXPECT_TRUE(ScEng::FindJournalsOf(folder_ / "none" / "graph.json", notes_).empty());
}

TEST_F(JournalTest, DamagedOnesAreLeftAsideWithANote) {
  Change("1");
  EXPECT_FALSE(session_->Tick(kNoon).IsError());
  const std::filesystem::path file = Find()[0].file;
  const std::string whole = ReadText(file);
  const std::size_t head = whole.find('\n');
  std::vector<std::string> damaged{whole.substr(0, whole.size() - 1),
                                   whole + " ",
                                   whole.substr(0, head),
                                   whole.substr(0, head / 2),
                                   "x",
                                   "{}\n",
                                   "[[[[\n",
                                   std::string(100000, '[')};
  damaged.push_back(whole);
  damaged.back()[whole.size() / 2] ^= 1;
  std::string later = whole;
  later.replace(later.find("\"version\":1"), 11, "\"version\":9");
  damaged.push_back(later);
  for (const std::string& text : damaged) {
    WriteText(file, text);
    EXPECT_TRUE(Find().empty());
    ASSERT_EQ(notes_.size(), 1U);
    EXPECT_EQ(ScEng::MakeLine(notes_[0]), notes_[0]);
    EXPECT_TRUE(Contains(notes_[0], "is left aside"));
  }
  EXPECT_TRUE(Contains(notes_[0], "version 9"));
  Findings findings;
  FoundJournal journal;
  journal.file = file;
  EXPECT_EQ(EditSession::Recover(Testing::GetCatalog(), journal, State(), findings), nullptr);
  EXPECT_EQ(findings.errors.size(), 1U);
  // A pipe is no journal, and nobody waits for what it may say.
  std::filesystem::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_TRUE(Find().empty());
  // Where the journal is gone, its link goes too.
  std::filesystem::remove(file);
  EXPECT_TRUE(Find().empty());
  EXPECT_TRUE(notes_.empty());
  EXPECT_TRUE(std::filesystem::is_empty(State() / "journals"));
}

TEST_F(JournalTest, IsKeptElsewhereWhereTheFolderTakesNone) {
  // A folder that is gone takes none, whoever the user is.
  std::filesystem::create_directory(folder_ / "sub");
  EXPECT_FALSE(session_->SaveAs(folder_ / "sub" / "graph.json").IsError());
  std::filesystem::remove_all(folder_ / "sub");
  Change("1");
  EXPECT_FALSE(session_->Tick(kNoon).IsError());
  ASSERT_EQ(Find().size(), 1U);
  EXPECT_EQ(Find()[0].file.parent_path(), State() / "journals");
  EXPECT_EQ(Find()[0].document, folder_ / "sub" / "graph.json");
}

TEST_F(JournalTest, SaysThatItCannotBeWritten) {
  WriteText(State(), "a file where a folder should be");
  EditSession session(Testing::GetCatalog(), State());
  EXPECT_FALSE(session.AddNode({Testing::kAdd, "e", {}}).IsError());
  EXPECT_TRUE(session.Tick(kNoon).IsError());
  EXPECT_FALSE(session.Tick(kNoon + milliseconds(500)).IsError());
  EXPECT_TRUE(session.Tick(kNoon + milliseconds(1500)).IsError());
  std::filesystem::remove(State());
  EXPECT_FALSE(session.Tick(kNoon + milliseconds(3000)).IsError());
  EXPECT_EQ(Find().size(), 1U);
}

TEST(JournalTextTest, ReadsBackWhatItWrites) {
  const JournalHead head{"/a b/%/\xFF\n\"x\".json", "/a b", ScEng::GetOwnIdentity(), kNoon + milliseconds(7)};
  const std::string text = ScEng::MakeJournalText(head, "{\"a\": 1}\n\n");
  JournalHead read;
  std::string_view document;
  ASSERT_FALSE(ScEng::ParseJournalText(text, read, document).IsError());
  EXPECT_EQ(document, "{\"a\": 1}\n\n");
  EXPECT_EQ(read.document, head.document);
  EXPECT_EQ(read.folder, head.folder);
  EXPECT_EQ(read.writer, head.writer);
  EXPECT_EQ(read.time, head.time);
  EXPECT_TRUE(ScEng::IsRunning(read.writer));
  EXPECT_FALSE(ScEng::IsRunning(MakeGoneProcess()));
  // After the machine has started again, or on another one, the same number means another process.
  ScEng::ProcessIdentity other = head.writer;
  other.boot = "another";
  EXPECT_FALSE(ScEng::IsRunning(other));
  other = head.writer;
  other.machine += "x";
  EXPECT_FALSE(ScEng::IsRunning(other));
}

TEST(StateFolderTest, IsTheUsers) {
  const char* before = std::getenv("XDG_STATE_HOME");
  const std::string kept = before != nullptr ? before : "";
  setenv("XDG_STATE_HOME", "/tmp/state", 1);
  EXPECT_EQ(ScEng::GetStateFolder(), "/tmp/state/value");
  setenv("XDG_STATE_HOME", "relative", 1);
  EXPECT_TRUE(ScEng::GetStateFolder().is_absolute());
  EXPECT_EQ(ScEng::GetStateFolder().filename(), "value");
  before != nullptr ? setenv("XDG_STATE_HOME", kept.c_str(), 1) : unsetenv("XDG_STATE_HOME");
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Host/Editing/EditSession.h"
#include "Tests/Support/EditTesting.h"
#include "Tests/Support/WatchedMemory.h"

namespace {

using ScEng::EditSession;
using ScEng::Point;
using Testing::Save;

/// A chain of additions.
class Chain {
 public:
  explicit Chain(int count) : session_(Testing::GetCatalog(), folder_ / "state") {
    ScEng::GraphDocument& document = session_.GetDocument();
    ScEng::Status status;
    for (int i = 0; i < count; ++i) {
      document.AddNode("n" + std::to_string(i), Testing::kAdd, status);
      if (i > 0) {
        status = document.Connect("n" + std::to_string(i - 1) + ".image", "n" + std::to_string(i) + ".image", 0);
        EXPECT_FALSE(status.IsError());
      }
    }
    // Lists grow now, and not within what is counted.
    EXPECT_FALSE(session_.SetNote("n0", "1").IsError());
    EXPECT_FALSE(session_.SetNote("n0", "2").IsError());
    EXPECT_FALSE(session_.SetNote("n0", "3").IsError());
    EXPECT_FALSE(session_.Undo().IsError());
  }

  EditSession& Get() { return session_; }
  /// The bytes that a command allocates.
  std::size_t Count(const std::function<ScEng::Status(EditSession&)>& command) {
    const std::size_t before = Testing::GetAllocatedBytes();
    const ScEng::Status status = command(session_);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
    return Testing::GetAllocatedBytes() - before;
  }

 private:
  Testing::TemporaryFolder folder_;
  EditSession session_;
};

TEST(LargeDocumentTest, ACommandNeedsNoMoreMemoryInALargeDocument) {
  Chain small(10);
  Chain large(10'000);
  const auto last = [](EditSession& session) { return session.GetDocument().GetIds().back(); };
  const std::vector<std::pair<const char*, std::function<ScEng::Status(EditSession&)>>> commands{
      {"attribute",
       [&](EditSession& s) {
         return s.SetAttributes({{"n5.constant", 0.5}});
       }},
      {"position",
       [&](EditSession& s) {
         return s.SetPositions({{"n5", Point{1, 2}}});
       }},
      {"enabled", [&](EditSession& s) { return s.SetEnabled({"n5"}, false); }},
      {"note", [&](EditSession& s) { return s.SetNote("n5", "a note"); }},
      {"undo", [&](EditSession& s) { return s.Undo(); }},
      {"redo", [&](EditSession& s) { return s.Redo(); }},
      {"copy",
       [&](EditSession& s) {
         ScEng::CopiedNodes copied;
         return s.Copy({"n5", "n6"}, copied);
       }},
      {"rename", [&](EditSession& s) { return s.RenameNode("n5", "m5"); }},
      {"disconnect",
       [&](EditSession& s) {
         return s.Disconnect({"n6.image", "n7.image", 0});
       }},
      {"remove", [&](EditSession& s) { return s.RemoveNodes({last(s)}); }}};
  for (const auto& [name, command] : commands) {
    const std::size_t of_small = small.Count(command);
    const std::size_t of_large = large.Count(command);
    // Some lists grow by doubling, and names have a few more digits.
    EXPECT_LE(of_large, of_small + 2000) << name;
  }
  // A drag of many moments stays one step, and keeps nothing of those between.
  const std::size_t steps = large.Get().GetHistory().size();
  large.Get().BeginGesture();
  for (int i = 0; i < 1000; ++i) {
    EXPECT_LE(large.Count([&](EditSession& s) { return s.SetAttributes({{"n7.constant", i + 0.5}}); }), 4000U);
  }
  EXPECT_EQ(large.Get().GetHistory().size(), steps + 1);
}

TEST(LargeDocumentTest, EverythingIsRemovedAndBroughtBack) {
  Chain chain(10'000);
  EditSession& session = chain.Get();
  const std::string before = Save(session.GetDocument());
  const std::vector<std::string> ids = session.GetDocument().GetIds();
  EXPECT_FALSE(session.Duplicate(ids, {10, 10}, false).IsError());
  EXPECT_EQ(session.GetDocument().GetIds().size(), 20'000U);
  EXPECT_EQ(session.GetDocument().GetIds().back(), "n19999");
  EXPECT_FALSE(session.Undo().IsError());
  EXPECT_EQ(Save(session.GetDocument()), before);
  // Through all but the first and last.
  EXPECT_FALSE(session.RemoveAndHeal({ids.begin() + 1, ids.end() - 1}).IsError());
  EXPECT_EQ(session.GetDocument().GetConnections(),
            (std::vector<ScEng::DocumentConnection>{{"n0.image", "n9999.image", 0}}));
  EXPECT_FALSE(session.RemoveNodes({"n0", "n9999"}).IsError());
  EXPECT_FALSE(session.GoTo(session.GetPlace() - 2).IsError());
  EXPECT_EQ(Save(session.GetDocument()), before);
}

}  // namespace

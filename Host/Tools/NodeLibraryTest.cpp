// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/NodeLibrary.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Engine.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::NodeCatalog;
using ScEng::NodeLibrary;
using ScEng::RefPtr;
using ScEng::Status;
using Testing::Contains;

std::filesystem::path LibraryFile(const std::string& name) {
  return std::filesystem::path(VALUE_TEST_LIBRARIES) / (name + ".so");
}

/// Whether the process holds the library at this moment.
bool IsInProcess(const std::filesystem::path& file) {
  void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

/// The message with which loading fails.
std::string Failure(const std::filesystem::path& file) {
  Status status;
  const auto library = NodeLibrary::Load(file, status);
  EXPECT_EQ(library, nullptr);
  EXPECT_TRUE(status.IsError());
  EXPECT_FALSE(IsInProcess(file));
  EXPECT_TRUE(Contains(status.GetMessage(), file.filename().string()));
  EXPECT_EQ(status.GetMessage().find('\n'), std::string::npos);
  return status.GetMessage();
}

TEST(NodeLibrary, LoadsAGoodLibrary) {
  const auto file = LibraryFile("TinyLibrary");
  Status status;
  auto library = NodeLibrary::Load(file, status);
  ASSERT_NE(library, nullptr) << status.GetMessage();
  EXPECT_FALSE(status.IsError());
  EXPECT_EQ(library->GetName(), "Parts");
  EXPECT_EQ(library->GetFile(), std::filesystem::canonical(file));
  ASSERT_EQ(library->GetDescriptors().size(), 1U);
  EXPECT_EQ(library->GetDescriptors()[0]->GetNodeType(), NodeType(900, 1, 7));
  EXPECT_EQ(library->GetDescriptors()[0]->GetRefCount(), 1U);
  EXPECT_TRUE(IsInProcess(file));
  library.reset();
  EXPECT_FALSE(IsInProcess(file));
}

TEST(NodeLibrary, NodesOfALibraryAreEvaluated) {
  Status status;
  auto catalog = std::make_shared<NodeCatalog>();
  EXPECT_FALSE(catalog->AddLibrary(NodeLibrary::Load(LibraryFile("TinyLibrary"), status)).IsError());
  {
    Engine engine(catalog);
    catalog.reset();
    Node* node = engine.CreateNode({900, 1, 7});
    ASSERT_NE(node, nullptr);
    engine.Evaluate({{node, 0}});
    ASSERT_NE(node->GetOutputImage(0), nullptr);
    EXPECT_EQ(node->GetOutputImage(0)->GetConstArray()[0], 0.25F);
  }
  EXPECT_FALSE(IsInProcess(LibraryFile("TinyLibrary")));
}

TEST(NodeLibrary, MissingFile) { Failure(LibraryFile("NoSuchLibrary")); }

TEST(NodeLibrary, FolderInsteadOfAFile) {
  Status status;
  EXPECT_EQ(NodeLibrary::Load(VALUE_TEST_LIBRARIES, status), nullptr);
  EXPECT_TRUE(Contains(status.GetMessage(), VALUE_TEST_LIBRARIES));
}

TEST(NodeLibrary, TextInsteadOfALibrary) {
  const Testing::TemporaryFolder folder;
  Testing::WriteText(folder / "letter.so", "Dear host, I am no library.\n");
  EXPECT_TRUE(Contains(Failure(folder / "letter.so"), "cannot be loaded: it is not a shared library"));
  Testing::WriteText(folder / "empty.so", "");
  Failure(folder / "empty.so");
}

TEST(NodeLibrary, MissingExports) {
  EXPECT_TRUE(Contains(Failure(LibraryFile("ExportsNothing")), "GetLibraryInterface"));
  EXPECT_TRUE(Contains(Failure(LibraryFile("LacksOneExport")), "GetNodeInterface"));
}

TEST(NodeLibrary, NoLibraryObject) {
  const std::string message = Failure(LibraryFile("NullLibraryObject"));
  EXPECT_TRUE(Contains(message, "GetLibraryInterface"));
  EXPECT_TRUE(Contains(message, "null"));
}

TEST(NodeLibrary, NegativeCount) { EXPECT_TRUE(Contains(Failure(LibraryFile("NegativeCount")), "-3")); }

TEST(NodeLibrary, CatalogThatAnswersNull) {
  const std::string message = Failure(LibraryFile("NullDescriptor"));
  EXPECT_TRUE(Contains(message, "GetNodeInterface(1)"));
  EXPECT_TRUE(Contains(message, "null"));
}

TEST(NodeLibrary, DescriptorWithoutFactory) {
  const std::string message = Failure(LibraryFile("NoFactory"));
  EXPECT_TRUE(Contains(message, "GetNodeInterface(0)"));
  EXPECT_TRUE(Contains(message, "factory"));
}

TEST(NodeLibrary, FactoryOfAnotherType) {
  const std::string message = Failure(LibraryFile("ForeignFactory"));
  EXPECT_TRUE(Contains(message, "900, 1, 3"));
  EXPECT_TRUE(Contains(message, "900, 1, 4"));
}

TEST(NodeLibrary, EntryPointThatThrows) {
  EXPECT_TRUE(Contains(Failure(LibraryFile("ThrowingEntry")), "the shelf is bare"));
}

TEST(NodeLibrary, EntryPointsThatThrowAreNamed) {
  const std::pair<const char*, const char*> kCases[] = {
      {"ThrowsInLibrary", "GetLibraryInterface threw an exception"},
      {"ThrowsInLibraryName", "the library object's GetName threw an exception"},
      {"ThrowsInCount", "GetNumNodeInterfaces threw an exception"},
      {"ThrowsInFactory", "GetNodeInterface(1): GetNodeFactory threw an exception"},
      {"ThrowsInFactoryType", "GetNodeInterface(1): GetNodeType threw an exception"},
  };
  for (const auto& [library, message] : kCases) {
    EXPECT_EQ(Failure(LibraryFile(library)), "plug-in \"" + LibraryFile(library).string() + "\": " + message +
                                                 ": the shelf is bare and the door is shut");
  }
}

// ---- The catalogue ----

TEST(NodeCatalog, ALibraryWhoseNamesThrowLeavesNothingBehind) {
  const std::pair<const char*, const char*> kCases[] = {{"ThrowsInName", "GetName"},
                                                        {"ThrowsInTypeName", "GetTypeName"}};
  for (const auto& [name, operation] : kCases) {
    NodeCatalog catalog;
    Status status;
    auto library = NodeLibrary::Load(LibraryFile(name), status);
    ASSERT_NE(library, nullptr) << status.GetMessage();
    bool is_taken = true;
    status = catalog.AddLibrary(std::move(library), &is_taken);
    EXPECT_FALSE(is_taken);
    // The library is unloaded by now, and its text with it.
    EXPECT_FALSE(IsInProcess(LibraryFile(name)));
    EXPECT_EQ(status.GetMessage(), "plug-in \"" + std::filesystem::canonical(LibraryFile(name)).string() +
                                       "\": node type 900, 2, 2: " + operation +
                                       " threw an exception: the shelf is bare and the door is shut");
    EXPECT_TRUE(catalog.GetDescriptors().empty());
    EXPECT_TRUE(catalog.GetLibraries().empty());
    EXPECT_EQ(catalog.Find({900, 2, 1}), nullptr);
    EXPECT_EQ(catalog.FindTypeName("PartsNode1"), nullptr);
    EXPECT_EQ(catalog.FindWritten("parts node 1"), nullptr);
  }
}

TEST(NodeCatalog, AFactoryThatThrowsMakesNoNode) {
  Status status;
  auto catalog = std::make_shared<NodeCatalog>();
  ASSERT_FALSE(catalog->AddLibrary(NodeLibrary::Load(LibraryFile("ThrowsInCreateNode"), status)).IsError());
  Engine engine(catalog);
  EXPECT_EQ(engine.CreateNode({900, 2, 2}), nullptr);
  EXPECT_EQ(engine.CreateNode({900, 2, 2}, status), nullptr);
  EXPECT_EQ(status.GetMessage(), "node \"Parts Node 2\" of plug-in \"" +
                                     std::filesystem::canonical(LibraryFile("ThrowsInCreateNode")).string() +
                                     "\": CreateNode threw an exception: the shelf is bare and the door is shut");
  EXPECT_NE(engine.CreateNode({900, 2, 1}), nullptr);
  EXPECT_EQ(engine.GetNodes().size(), 1U);
}

class FirstNode : public Testing::TestNode {
 public:
  static constexpr NodeType kType{10, 16, 10};
  static constexpr const char* kName = "FirstNode";
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "First"; }
};

class SecondNode : public FirstNode {
 public:
  static constexpr NodeType kType{10, 16, 11};
  static constexpr const char* kName = "SecondNode";
};

/// The numbers of the first under another name.
class SameNumbersNode : public FirstNode {
 public:
  static constexpr const char* kName = "SameNumbersNode";
};

/// The name of the first under other numbers.
class SameNameNode : public FirstNode {
 public:
  static constexpr NodeType kType{10, 16, 12};
};

template <class NodeClass>
RefPtr<NodeInterface> MakeDescriptor() {
  return RefPtr<NodeInterface>(new Testing::TestDescriptor<NodeClass>);
}

TEST(NodeCatalog, RefusesNumbersAndNamesThatAreTaken) {
  NodeCatalog catalog;
  EXPECT_FALSE(catalog.AddDescriptor(MakeDescriptor<FirstNode>()).IsError());
  EXPECT_FALSE(catalog.AddDescriptor(MakeDescriptor<SecondNode>()).IsError());
  const Status numbers = catalog.AddDescriptor(MakeDescriptor<SameNumbersNode>());
  EXPECT_TRUE(numbers.IsError());
  EXPECT_TRUE(Contains(numbers.GetMessage(), "10, 16, 10"));
  EXPECT_TRUE(Contains(numbers.GetMessage(), "FirstNode"));
  EXPECT_TRUE(Contains(numbers.GetMessage(), "SameNumbersNode"));
  const Status name = catalog.AddDescriptor(MakeDescriptor<SameNameNode>());
  EXPECT_TRUE(name.IsError());
  EXPECT_TRUE(Contains(name.GetMessage(), "FirstNode"));
  EXPECT_EQ(catalog.GetDescriptors().size(), 2U);
}

TEST(NodeCatalog, TakesALibraryAsAWholeOrNotAtAll) {
  NodeCatalog catalog;
  catalog.AddDescriptor(MakeDescriptor<FirstNode>());
  Status status;
  auto taken = NodeLibrary::Load(LibraryFile("TakenNumbers"), status);
  ASSERT_NE(taken, nullptr) << status.GetMessage();
  bool is_taken = false;
  status = catalog.AddLibrary(std::move(taken), &is_taken);
  EXPECT_TRUE(is_taken);
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), "TakenNumbers.so"));
  EXPECT_TRUE(Contains(status.GetMessage(), "10, 16, 10"));
  EXPECT_EQ(catalog.GetDescriptors().size(), 1U);
  EXPECT_EQ(catalog.Find({900, 1, 5}), nullptr);
  EXPECT_TRUE(catalog.GetLibraries().empty());
  EXPECT_FALSE(IsInProcess(LibraryFile("TakenNumbers")));
}

TEST(NodeCatalog, TellsATypeThatALibraryHasTwiceFromOneThatIsTaken) {
  NodeCatalog catalog;
  Status status;
  auto twins = NodeLibrary::Load(LibraryFile("TwinNumbers"), status);
  ASSERT_NE(twins, nullptr) << status.GetMessage();
  bool is_taken = true;
  EXPECT_TRUE(catalog.AddLibrary(std::move(twins), &is_taken).IsError());
  EXPECT_FALSE(is_taken);
}

TEST(NodeCatalog, PassesOverALibraryThatItHas) {
  NodeCatalog catalog;
  Status status;
  EXPECT_FALSE(catalog.AddLibrary(NodeLibrary::Load(LibraryFile("TinyLibrary"), status)).IsError());
  const auto same_file = std::filesystem::path(VALUE_TEST_LIBRARIES) / "." / "TinyLibrary.so";
  EXPECT_FALSE(catalog.AddLibrary(NodeLibrary::Load(same_file, status)).IsError());
  EXPECT_EQ(catalog.GetLibraries().size(), 1U);
  EXPECT_EQ(catalog.GetDescriptors().size(), 1U);
}

TEST(NodeCatalog, FindsByNumbersAndNames) {
  NodeCatalog catalog;
  catalog.AddDescriptor(MakeDescriptor<FirstNode>());
  catalog.AddDescriptor(MakeDescriptor<SecondNode>());
  NodeInterface* second = catalog.Find({10, 16, 11});
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->GetNodeFactory()->GetTypeName(), "SecondNode");
  EXPECT_EQ(catalog.FindTypeName("SecondNode"), second);
  EXPECT_EQ(catalog.FindTypeName("secondnode"), nullptr);
  EXPECT_EQ(catalog.FindTypeName("Test SecondNode"), nullptr);
  for (const char* written : {"SecondNode", "secondnode", "Test SecondNode", "TEST SECONDNODE", "10, 16, 11",
                              "10 16 11", "10,16,11", "[10, 16, 11]"}) {
    EXPECT_EQ(catalog.FindWritten(written), second) << written;
  }
  for (const char* written :
       {"", "Second", "10, 16", "10, 16, 11, 0", "10, 16, 99", "10, 16, -11", "99999999999, 16, 11"}) {
    EXPECT_EQ(catalog.FindWritten(written), nullptr) << written;
  }
  EXPECT_EQ(catalog.Find({10, 16, 99}), nullptr);
}

TEST(NodeCatalog, SuggestsTheClosestName) {
  NodeCatalog catalog;
  catalog.AddDescriptor(MakeDescriptor<FirstNode>());
  catalog.AddDescriptor(MakeDescriptor<SecondNode>());
  EXPECT_EQ(catalog.Suggest("SecondNoed"), "SecondNode");
  EXPECT_EQ(catalog.Suggest("firstnode"), "FirstNode");
  EXPECT_EQ(catalog.Suggest("Tst FirstNode"), "Test FirstNode");
  EXPECT_EQ(catalog.Suggest("quite another thing"), "");
}

TEST(FindClosest, TakesNoTimeForTextThatIsMuchLonger) {
  // Comparing them letter by letter would take eight thousand million steps.
  const std::vector<std::string> words(10, std::string(8, 'a'));
  EXPECT_EQ(ScEng::FindClosest(std::string(100000000, 'a'), words), "");
}

TEST(FindClosest, AllowsAThirdOfTheLetters) {
  const std::vector<std::string> words{"constant", "image", "low"};
  EXPECT_EQ(ScEng::FindClosest("constnat", words), "constant");
  EXPECT_EQ(ScEng::FindClosest("imag", words), "image");
  EXPECT_EQ(ScEng::FindClosest("LOW", words), "low");
  EXPECT_EQ(ScEng::FindClosest("lw", words), "low");
  EXPECT_EQ(ScEng::FindClosest("xyzzy", words), "");
  EXPECT_EQ(ScEng::FindClosest("", words), "");
  EXPECT_EQ(ScEng::FindClosest("a", {}), "");
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/RefCounter.h"
#include "Host/Validation/GuardedMemory.h"

namespace ScEng {

/// The entry points of the library that is checked; null where it lacks one.
struct EntryPoints {
  void* handle = nullptr;
  NodeLibrary::GetLibraryInterfaceFunction get_library = nullptr;
  NodeLibrary::GetNumNodeInterfacesFunction get_count = nullptr;
  NodeLibrary::GetNodeInterfaceFunction get_descriptor = nullptr;
  /// The threads that came up while the library was loaded.
  std::set<std::string> own_threads;
};

/// The threads of this process, by their numbers.
std::set<std::string> ListThreads();

/// What is wrong with a name that is shown and stored; empty where nothing is.
std::string FindNameProblem(const std::string& name);

/// What a check works on, and where it says what it found. Lives in the child process.
class Subject {
 public:
  /// `say` carries text to the validating process: what is being done, told under the key "at", and what was learnt of
  /// the library, under "count", "library" and "label".
  using Say = std::function<void(const char* key, const std::string& text)>;

  Subject(EntryPoints& entry_points, GuardedMemory& memory, std::int32_t count, std::int32_t index, Say say)
      : entry_points_(entry_points), memory_(memory), count_(count), index_(index), say_(std::move(say)) {}

  [[nodiscard]] EntryPoints& GetEntryPoints() const { return entry_points_; }
  [[nodiscard]] GuardedMemory& GetMemory() const { return memory_; }
  /// The number of node types that the check "count" found.
  [[nodiscard]] std::int32_t GetCount() const { return count_; }

  /// The descriptor of the node type that the check is about, which stays to its end; null after a skip was noted.
  NodeInterface* GetDescriptor();
  /// A new node of that type; null after a skip was noted.
  RefPtr<Node> MakeNode();
  [[nodiscard]] std::uint64_t GetIndex() const { return static_cast<std::uint64_t>(index_); }

  /// What is being done from now on, for the case that it is the last thing: "evaluating a 3 x 2 value image".
  void At(const std::string& text) const { say_("at", text); }
  void Tell(const char* key, const std::string& text) const { say_(key, text); }

  /// Something is wrong: says what, and what would be right.
  void Fail(std::string text) { failures_.push_back(std::move(text)); }
  /// The check cannot be made.
  void Skip(std::string text) { skips_.push_back(std::move(text)); }
  [[nodiscard]] bool HasFailed() const { return !failures_.empty(); }
  [[nodiscard]] const std::vector<std::string>& GetFailures() const { return failures_; }
  [[nodiscard]] const std::vector<std::string>& GetSkips() const { return skips_; }

 private:
  EntryPoints& entry_points_;
  GuardedMemory& memory_;
  std::int32_t count_;
  std::int32_t index_;
  Say say_;
  RefPtr<NodeInterface> descriptor_;
  std::vector<std::string> failures_;
  std::vector<std::string> skips_;
};

using CheckFunction = void (*)(Subject&);

// Of the library as a whole.
void CheckExports(Subject& subject);
void CheckLibraryObject(Subject& subject);
void CheckCount(Subject& subject);
void CheckAboveCount(Subject& subject);
void CheckDescriptors(Subject& subject);
void CheckNames(Subject& subject);
void CheckNumbers(Subject& subject);
void CheckUnload(Subject& subject);

// Of a node type, without evaluation.
void CheckIcons(Subject& subject);
void CheckFactory(Subject& subject);
void CheckAttributes(Subject& subject);
void CheckPlugs(Subject& subject);

// Of a node type, by evaluating nodes.
void CheckNothingConnected(Subject& subject);
void CheckTinyImages(Subject& subject);
void CheckEmptyImages(Subject& subject);
void CheckColorModes(Subject& subject);
void CheckAwkwardSamples(Subject& subject);
void CheckAttributeValues(Subject& subject);
void CheckDisabled(Subject& subject);
void CheckOutputs(Subject& subject);
void CheckEvents(Subject& subject);
void CheckGraph(Subject& subject);
void CheckInputsUntouched(Subject& subject);
void CheckMemoryBounds(Subject& subject);
void CheckReferences(Subject& subject);
void CheckLeaks(Subject& subject);
void CheckRepeatable(Subject& subject);
void CheckThreads(Subject& subject);

// Of a node type, towards its process.
void CheckExceptions(Subject& subject);
void CheckFloatingPoint(Subject& subject);
void CheckProcessState(Subject& subject);
void CheckStandardOutput(Subject& subject);

struct Check {
  const char* name;
  const char* about;
  bool of_nodes;
  CheckFunction run;
};

/// The one list of checks, in their order. Loading the library comes first and has no function: the child does it
/// before all else.
inline constexpr Check kChecks[] = {
    {"load", "the library can be loaded", false, nullptr},
    {"exports", "the three entry points are exported", false, CheckExports},
    {"library-object", "the library object is new at each call and has a name", false, CheckLibraryObject},
    {"count", "the number of node types makes sense and stays", false, CheckCount},
    {"above-count", "there is no descriptor from the count on", false, CheckAboveCount},
    {"descriptors", "descriptors and factories are new at each call", false, CheckDescriptors},
    {"names", "class names and display names are there and unique", false, CheckNames},
    {"numbers", "numbers of node types are unique", false, CheckNumbers},
    {"icons", "both icons resolve and can be decoded", true, CheckIcons},
    {"factory", "descriptor, factory and node agree", true, CheckFactory},
    {"attributes", "attributes have unique names, ids in order and defaults in bounds", true, CheckAttributes},
    {"plugs", "plugs are named, of known types, one per attribute, and there is an output", true, CheckPlugs},
    {"exceptions", "no operation but Evaluate lets an exception out", true, CheckExceptions},
    {"nothing-connected", "evaluation without images", true, CheckNothingConnected},
    {"tiny-images", "evaluation of images of a few pixels", true, CheckTinyImages},
    {"empty-images", "evaluation of images without pixels", true, CheckEmptyImages},
    {"color-modes", "evaluation in every colour mode, and in several at once", true, CheckColorModes},
    {"awkward-samples", "evaluation of NaN, infinities, denormals, signed zeros and odd ranges", true,
     CheckAwkwardSamples},
    {"attribute-values", "evaluation at bounds, beyond them, with every word and with empty plugs", true,
     CheckAttributeValues},
    {"disabled", "evaluation of the disabled node", true, CheckDisabled},
    {"outputs", "output indices, and outputs that the host keeps", true, CheckOutputs},
    {"events", "events are answered, and cached results dropped when asked for", true, CheckEvents},
    {"graph", "evaluation by the engine, with every plug connected", true, CheckGraph},
    {"inputs-untouched", "inputs stay as they are", true, CheckInputsUntouched},
    {"memory-bounds", "nothing is written or read beside the samples of an image", true, CheckMemoryBounds},
    {"references", "reference counts return", true, CheckReferences},
    {"leaks", "nothing is left behind by many rounds", true, CheckLeaks},
    {"repeatable", "the same inputs give the same bytes", true, CheckRepeatable},
    {"threads", "the number of threads does not change a byte", true, CheckThreads},
    {"floating-point", "rounding, denormals and traps stay as they are", true, CheckFloatingPoint},
    {"process-state", "descriptors, working directory, signals, locale and file mask stay as they are", true,
     CheckProcessState},
    {"standard-output", "nothing is written to standard output", true, CheckStandardOutput},
    {"unload", "the library can be let go", false, CheckUnload},
};

}  // namespace ScEng

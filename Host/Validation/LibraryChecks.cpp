// SPDX-License-Identifier: Apache-2.0
//
// Checks of a library as a whole: its entry points, its library object, and its node types against each other.
#include <dlfcn.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/LibraryInterface.h"
#include "Host/Validation/Checks.h"
#include "Host/Validation/ThreadScan.h"

namespace ScEng {
namespace {

// More types than any library has: beyond it the count is taken for garbage.
constexpr std::int32_t kMostNodeTypes = 100000;

std::string Call(std::uint64_t index) { return "GetNodeInterface(" + std::to_string(index) + ")"; }

/// Whether the bytes are the encoding of a text in UTF-8, as documents and interfaces carry it.
bool IsUtf8(const std::string& text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto first = static_cast<unsigned char>(text[i]);
    const std::size_t length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if ((first >= 0x80 && first < 0xC2) || first > 0xF4 || i + length > text.size()) return false;
    for (std::size_t k = 1; k < length; ++k) {
      if ((static_cast<unsigned char>(text[i + k]) & 0xC0U) != 0x80U) return false;
    }
    i += length;
  }
  return true;
}

std::string ToLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

/// A new descriptor; null where there is none or an exception comes in its place, which is the affair of the check
/// "descriptors".
RefPtr<NodeInterface> TryDescriptor(const Subject& subject, std::uint64_t index) {
  subject.At("asking for " + Call(index));
  try {
    return RefPtr<NodeInterface>(subject.GetEntryPoints().get_descriptor(index));
  } catch (...) {
    return {};
  }
}

/// All descriptors that are there and have a factory, with their indices; the others are the affair of the check
/// "descriptors".
std::vector<std::pair<std::int32_t, RefPtr<NodeInterface>>> MakeDescriptors(const Subject& subject) {
  std::vector<std::pair<std::int32_t, RefPtr<NodeInterface>>> descriptors;
  for (std::int32_t index = 0; index < subject.GetCount(); ++index) {
    RefPtr<NodeInterface> descriptor = TryDescriptor(subject, static_cast<std::uint64_t>(index));
    if (descriptor && descriptor->GetNodeFactory() != nullptr) descriptors.emplace_back(index, std::move(descriptor));
  }
  return descriptors;
}

}  // namespace

std::string FindNameProblem(const std::string& name) {
  const auto is_control = [](unsigned char letter) { return letter < 0x20 || letter == 0x7F; };
  if (name.find_first_not_of(' ') == std::string::npos) return "is empty";
  if (std::any_of(name.begin(), name.end(), is_control)) return "holds control characters";
  if (!IsUtf8(name)) return "is not UTF-8";
  if (name.front() == ' ' || name.back() == ' ') return "starts or ends with a blank";
  return {};
}

NodeInterface* Subject::GetDescriptor() {
  if (descriptor_) return descriptor_.Get();
  const RefPtr<NodeInterface> descriptor = TryDescriptor(*this, GetIndex());
  if (!descriptor) {
    Skip("there is no descriptor");
  } else if (descriptor->GetNodeFactory() == nullptr) {
    Skip("there is no factory");
  } else {
    descriptor_ = descriptor;
  }
  return descriptor_.Get();
}

RefPtr<Node> Subject::MakeNode() {
  NodeInterface* descriptor = GetDescriptor();
  if (descriptor == nullptr) return {};
  At("making a node");
  RefPtr<Node> node(descriptor->GetNodeFactory()->CreateNode());
  if (!node) Skip("the factory makes no node");
  return node;
}

void CheckExports(Subject& subject) {
  const EntryPoints& entries = subject.GetEntryPoints();
  std::string missing;
  for (const auto& [name, is_there] : {std::pair("GetLibraryInterface", entries.get_library != nullptr),
                                       std::pair("GetNumNodeInterfaces", entries.get_count != nullptr),
                                       std::pair("GetNodeInterface", entries.get_descriptor != nullptr)}) {
    if (!is_there) missing += (missing.empty() ? "" : ", ") + std::string(name);
  }
  if (!missing.empty()) {
    subject.Fail(
        "it does not export " + missing +
        "; a node library exports GetLibraryInterface, GetNumNodeInterfaces and GetNodeInterface with C linkage");
  }
}

void CheckLibraryObject(Subject& subject) {
  const auto get_library = subject.GetEntryPoints().get_library;
  subject.At("calling GetLibraryInterface");
  LibraryInterface* const first = get_library();
  LibraryInterface* const second = get_library();
  if (first == nullptr || second == nullptr) {
    subject.Fail("GetLibraryInterface answers null; it has to answer a new library object at each call");
    return;
  }
  // The host never deletes library objects: they have no virtual destructor.
  if (first == second) {
    subject.Fail("GetLibraryInterface answers the same object twice; each call has to make a new one");
  }
  subject.At("calling the operations of the library object");
  const std::string name = first->GetName();
  const std::string problem = FindNameProblem(name);
  if (!problem.empty()) subject.Fail("the library's name " + problem + "; hosts list libraries by their names");
  if (second->GetName() != name) {
    subject.Fail("the library's name is \"" + name + "\" and then \"" + second->GetName() + "\"; it has to stay");
  }
  static_cast<void>(first->GetSecondaryText());
  first->LibraryHook1();
  first->LibraryHook2();
  first->LibraryHook3();
  subject.Tell("library", name);
}

void CheckCount(Subject& subject) {
  const EntryPoints& entries = subject.GetEntryPoints();
  subject.At("calling GetNumNodeInterfaces");
  const std::int32_t count = entries.get_count();
  if (count < 0 || count > kMostNodeTypes) {
    subject.Fail("GetNumNodeInterfaces answers " + std::to_string(count) +
                 ", which is no number of node types; it has to answer how many descriptors there are");
    return;
  }
  subject.Tell("count", std::to_string(count));
  for (int call = 0; call < 3; ++call) {
    const std::int32_t again = entries.get_count();
    if (again != count) {
      subject.Fail("GetNumNodeInterfaces answers " + std::to_string(count) + " and then " + std::to_string(again) +
                   "; it has to answer the same number at every call");
      return;
    }
  }
}

void CheckAboveCount(Subject& subject) {
  const auto count = static_cast<std::uint64_t>(subject.GetCount());
  constexpr std::uint64_t kWrapsAt32Bits = std::uint64_t{1} << 32U;
  for (const std::uint64_t index :
       {count, count + 1, count + 1000, std::uint64_t{0x7FFFFFFF}, std::uint64_t{0xFFFFFFFF}, kWrapsAt32Bits,
        kWrapsAt32Bits + 1, std::uint64_t{1} << 63U, std::numeric_limits<std::uint64_t>::max()}) {
    subject.At("asking for " + Call(index));
    if (subject.GetEntryPoints().get_descriptor(index) == nullptr) continue;
    subject.Fail(Call(index) + " answers a descriptor although there are " + std::to_string(count) +
                 " node types; from the count on it has to answer null");
    return;
  }
}

void CheckDescriptors(Subject& subject) {
  const auto get_descriptor = subject.GetEntryPoints().get_descriptor;
  // A count that is far off would say the same a thousand times.
  constexpr std::size_t kMostFailures = 10;
  for (std::int32_t index = 0; index < subject.GetCount() && subject.GetFailures().size() < kMostFailures; ++index) {
    const auto at = static_cast<std::uint64_t>(index);
    subject.At("asking for " + Call(at) + " twice");
    NodeInterface* const first = get_descriptor(at);
    NodeInterface* const second = get_descriptor(at);
    if (first == nullptr || second == nullptr) {
      subject.Fail(Call(at) + " answers null although there are " + std::to_string(subject.GetCount()) +
                   " node types; below the count it has to answer a descriptor");
      continue;
    }
    // An object that comes twice is not the host's to release.
    if (first == second) {
      subject.Fail(Call(at) +
                   " answers the same descriptor twice; each call has to make a new one, which the host owns");
      continue;
    }
    if (first->GetRefCount() != 0 || second->GetRefCount() != 0) {
      subject.Fail(Call(at) + " answers a descriptor with " + std::to_string(first->GetRefCount()) +
                   " references; a new one has none, and the host takes the first");
      continue;
    }
    const RefPtr<NodeInterface> first_kept(first);
    const RefPtr<NodeInterface> second_kept(second);
    const NodeFactory* factory = first->GetNodeFactory();
    if (factory == nullptr) {
      subject.Fail(Call(at) + " answers a descriptor without a factory; nodes are made by the factory");
    } else if (factory == second->GetNodeFactory()) {
      subject.Fail("two descriptors of " + Call(at) +
                   " have the same factory; each owns a factory that goes with the descriptor");
    } else if (factory != first->GetNodeFactory()) {
      subject.Fail("a descriptor of " + Call(at) + " answers another factory at each call; it owns one");
    }
  }
}

void CheckNames(Subject& subject) {
  const auto descriptors = MakeDescriptors(subject);
  std::map<std::string, std::string> class_names;
  std::map<std::string, std::string> display_names;
  for (const RefPtr<NodeInterface>& host : CreateHostDescriptors()) {
    class_names.emplace(host->GetNodeFactory()->GetTypeName(), "one of the host's own node types");
    display_names.emplace(ToLower(host->GetName()), "one of the host's own node types");
  }
  for (const auto& [index, descriptor] : descriptors) {
    const std::string where = "node type " + std::to_string(index);
    subject.At("asking " + where + " for its names");
    const std::string class_name = descriptor->GetNodeFactory()->GetTypeName();
    const std::string display_name = descriptor->GetName();
    const std::string class_problem = FindNameProblem(class_name);
    const std::string display_problem = FindNameProblem(display_name);
    if (class_problem.empty()) subject.Tell("label", std::to_string(index) + " " + class_name);
    if (!class_problem.empty()) {
      subject.Fail("the class name of " + where + " " + class_problem + "; documents know node types by it");
    }
    if (!display_problem.empty()) {
      subject.Fail("the display name of " + where + " " + display_problem + "; hosts show it");
    }
    if (descriptor->GetNodeFactory()->GetTypeName() != class_name || descriptor->GetName() != display_name) {
      subject.Fail("the names of " + where + " change between calls; they have to stay");
    }
    const auto [same_class, is_new_class] = class_names.emplace(class_name, where);
    if (!is_new_class) {
      subject.Fail("the class name \"" + class_name + "\" of " + where + " is that of " + same_class->second +
                   " as well; each node type needs its own");
    }
    const auto [same_name, is_new_name] = display_names.emplace(ToLower(display_name), where);
    if (!is_new_name) {
      subject.Fail("the display name \"" + display_name + "\" of " + where + " is that of " + same_name->second +
                   " as well; each node type needs its own, whatever the case of its letters");
    }
  }
}

void CheckNumbers(Subject& subject) {
  std::map<NodeType, std::string> owners;
  for (const RefPtr<NodeInterface>& host : CreateHostDescriptors()) {
    owners.emplace(host->GetNodeType(), "the host's own " + host->GetNodeFactory()->GetTypeName());
  }
  for (const auto& [index, descriptor] : MakeDescriptors(subject)) {
    const NodeType type = descriptor->GetNodeType();
    const std::string name = "node type " + std::to_string(index);
    const auto [owner, is_new] = owners.emplace(type, name);
    if (!is_new) {
      subject.Fail(name + " has the numbers " + type.ToString() + ", which " + owner->second +
                   " has as well; documents know node types by their numbers, so each needs its own");
    }
  }
}

void CheckUnload(Subject& subject) {
  EntryPoints& entries = subject.GetEntryPoints();
  {
    const auto descriptors = MakeDescriptors(subject);
    std::vector<RefPtr<Node>> nodes;
    for (const auto& [index, descriptor] : descriptors) {
      subject.At("making a node of type " + std::to_string(index));
      nodes.emplace_back(descriptor->GetNodeFactory()->CreateNode());
    }
    subject.At("releasing a node of each type, then their descriptors");
  }
  subject.At("unloading the library");
  std::set<std::string> own_threads = entries.own_threads;
  // Those that an evaluation started, too. Only one that waits can be told, so each gets several chances to.
  const AddressRange code = AddressRange::FindOf(reinterpret_cast<const void*>(entries.get_count));
  constexpr int kChances = 20;
  for (int i = 0; i < kChances; ++i) {
    own_threads.merge(FindThreadsIn(code));
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (dlclose(entries.handle) != 0) {
    const char* reason = dlerror();
    subject.Fail(std::string("the library cannot be unloaded: ") + (reason != nullptr ? reason : "unknown"));
  }
  entries = {};
  // A thread that is about to end may take a moment.
  const auto goes_on = [&own_threads] {
    const std::set<std::string> threads = ListThreads();
    return std::any_of(own_threads.begin(), own_threads.end(),
                       [&threads](const std::string& thread) { return threads.contains(thread); });
  };
  constexpr auto kMoment = std::chrono::milliseconds(10);
  // One that does not end crashes where it runs on in code that is gone.
  if (goes_on()) subject.At("waiting for the end of a thread that the library started");
  for (int i = 0; i < 50 && goes_on(); ++i) std::this_thread::sleep_for(kMoment);
  if (goes_on()) {
    subject.Fail(
        "a thread that the library started goes on, although its code is gone; end it before the library is let go");
  }
}

std::set<std::string> ListThreads() {
  std::set<std::string> threads;
  std::error_code error;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", error)) {
    threads.insert(task.path().filename().string());
  }
  return threads;
}

}  // namespace ScEng

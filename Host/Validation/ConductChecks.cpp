// SPDX-License-Identifier: Apache-2.0
//
// Checks of how the nodes of a type behave towards the process that they run in.
#include <dlfcn.h>

#include <functional>
#include <string>

#include "Host/Tools/Guard.h"
#include "Host/Validation/Checks.h"
#include "Host/Validation/ProcessState.h"
#include "Host/Validation/Trial.h"

namespace ScEng {
namespace {

constexpr Size kSize{5, 3};

/// Calls every operation that a host calls in a run, and `look` after each, with what was done. Ends where `look`
/// answers false.
void WalkThrough(Subject& subject, const std::function<bool(const std::string& step)>& look) {
  if (subject.GetDescriptor() == nullptr || !look("making its descriptor")) return;
  RefPtr<Node> node = subject.MakeNode();
  if (!node || !look("making a node")) return;
  Setup nothing;
  nothing.about = "nothing connected";
  for (const bool enabled : {true, false}) {
    node->SetEnabled(enabled);
    for (const Setup& setup : {nothing, MakeSetup(kSize, ColorMode::kValue, Samples::kOrdinary),
                               MakeSetup(kSize, ColorMode::kColor, Samples::kAwkward)}) {
      Evaluate(subject, *node, setup);
      if (!look("evaluating " + std::string(enabled ? "" : "the disabled node with ") + setup.about)) return;
    }
  }
  subject.At("sending event 11 (drop cached results)");
  DropResults(*node);
  if (!look("event 11 (drop cached results)")) return;
  subject.At("releasing the node");
  node.Reset();
  look("releasing the node");
}

/// Calls operations one by one and fails for each that throws.
class ThrowWatch {
 public:
  explicit ThrowWatch(Subject& subject) : subject_(subject) {}

  template <class Function>
  void Call(const char* operation, const Function& function) {
    subject_.At(std::string("calling ") + operation);
    const Status status = CallGuarded(operation, [&] { static_cast<void>(function()); });
    if (!status.IsError()) return;
    subject_.Fail(status.GetMessage() +
                  "; nothing but Evaluate may throw, and what it throws becomes the node's error state");
  }

 private:
  Subject& subject_;
};

template <class Function>
void CallEach(ThrowWatch& watch, const char* operation, std::size_t count, const Function& function) {
  watch.Call(operation, [&] {
    for (unsigned i = 0; i < count; ++i) static_cast<void>(function(i));
    return 0;
  });
}

void CallDescriptor(ThrowWatch& watch, NodeInterface& descriptor) {
  watch.Call("GetName", [&] { return descriptor.GetName(); });
  watch.Call("GetGroupCode", [&] { return descriptor.GetGroupCode(); });
  watch.Call("GetLibraryName", [&] { return descriptor.GetLibraryName(); });
  watch.Call("GetExtraCode", [&] { return descriptor.GetExtraCode(); });
  watch.Call("GetIconPath", [&] { return descriptor.GetIconPath(); });
  watch.Call("GetSmallIconPath", [&] { return descriptor.GetSmallIconPath(); });
  watch.Call("GetDefaultMode", [&] { return descriptor.GetDefaultMode(); });
  const NodeFactory& factory = *descriptor.GetNodeFactory();
  watch.Call("the factory's GetNodeType", [&] { return factory.GetNodeType(); });
  watch.Call("GetTypeName", [&] { return factory.GetTypeName(); });
}

/// What a host asks a node that has joined it, and what it tells it.
void CallNode(ThrowWatch& watch, Node& node) {
  const std::string word = "no such name";
  const auto inplugs = node.GetInplugs().size();
  const auto outplugs = node.GetOutplugs().size();
  watch.Call("OnAdded", [&] { return node.OnAdded(), 0; });
  watch.Call("IsSink", [&] { return node.IsSink(); });
  watch.Call("the node's GetNodeType", [&] { return node.GetNodeType(); });
  watch.Call("the node's GetName", [&] { return node.GetName(); });
  watch.Call("GetAttributeVersion", [&] { return node.GetAttributeVersion(); });
  watch.Call("TranslateAttributeName", [&] { return node.TranslateAttributeName(0, word); });
  watch.Call("IsObsoleteAttribute", [&] { return node.IsObsoleteAttribute(0, word.c_str()); });
  CallEach(watch, "GetInplugAlias", inplugs, [&](unsigned i) { return node.GetInplugAlias(i); });
  CallEach(watch, "GetInplugVisibility", inplugs, [&](unsigned i) { return node.GetInplugVisibility(i); });
  CallEach(watch, "GetOutplugAlias", outplugs, [&](unsigned i) { return node.GetOutplugAlias(i); });
  CallEach(watch, "GetOutplugVisibility", outplugs, [&](unsigned i) { return node.GetOutplugVisibility(i); });
  CallEach(watch, "InplugAffectsOutplug", inplugs, [&](unsigned i) { return node.InplugAffectsOutplug(i, 0); });
  CallEach(watch, "V0GetInplugName", inplugs, [&](unsigned i) { return node.V0GetInplugName(i); });
  CallEach(watch, "V0GetOutplugName", outplugs, [&](unsigned i) { return node.V0GetOutplugName(i); });
  watch.Call("V0GetInplugIndex", [&] { return node.V0GetInplugIndex(word); });
  watch.Call("V0GetOutplugIndex", [&] { return node.V0GetOutplugIndex(word); });
  CallEach(watch, "GetOutputImage", outplugs, [&](unsigned i) { return node.GetOutputImage(i); });
  CallEach(watch, "GetOutputValue", outplugs, [&](unsigned i) { return node.GetOutputValue(i); });
  // The observers that the library itself has added to its node.
  watch.Call("an observer's OnNodeChanged", [&] { return node.NotifyChanged(), 0; });
  CallEach(watch, "an observer's OnAttributeSourcesChanged", node.GetNumAttributes(), [&](unsigned i) {
    node.SetAttributeSource(i, &node, 0);
    node.SetAttributeSource(i, nullptr, 0);
    return 0;
  });
  for (const std::uint32_t kind : {NodeEvent::kDropCachedResults, std::uint32_t{12}}) {
    NodeEvent event;
    event.kind = kind;
    watch.Call("OnProcessEvent", [&] { return node.OnProcessEvent(event); });
  }
  watch.Call("OnRemoved", [&] { return node.OnRemoved(), 0; });
}

/// Handlers that other libraries have set, such as the driver of a device when it is first used, are not this
/// library's affair.
void LeaveOutOtherHandlers(const Subject& subject, const ProcessState& before, ProcessState& after) {
  Dl_info own{};
  dladdr(reinterpret_cast<const void*>(subject.GetEntryPoints().get_library), &own);
  for (std::size_t i = 0; i < after.handlers.size(); ++i) {
    const auto handler = reinterpret_cast<const void*>(after.handlers[i].sa_handler);
    Dl_info info{};
    if (dladdr(handler, &info) != 0 && info.dli_fbase != own.dli_fbase) after.handlers[i] = before.handlers[i];
  }
}

}  // namespace

void CheckExceptions(Subject& subject) {
  NodeInterface* const descriptor = subject.GetDescriptor();
  if (descriptor == nullptr) return;
  ThrowWatch watch(subject);
  CallDescriptor(watch, *descriptor);
  RefPtr<Node> node;
  watch.Call("CreateNode", [&] { return node.Reset(descriptor->GetNodeFactory()->CreateNode()), 0; });
  if (!node) return;
  CallNode(watch, *node);
  subject.At("releasing the node");
}

void CheckFloatingPoint(Subject& subject) {
  const FloatingPointMode mode = FloatingPointMode::Get();
  WalkThrough(subject, [&](const std::string& step) {
    const std::string change = mode.FindChange(FloatingPointMode::Get());
    if (change.empty()) return true;
    mode.Restore();
    subject.Fail("after " + step + " " + change +
                 "; results of the whole host depend on it, so a library that computes in another way sets that back");
    return false;
  });
}

void CheckProcessState(Subject& subject) {
  const ProcessState before = ProcessState::Get();
  WalkThrough(subject, [&](const std::string& step) {
    ProcessState after = ProcessState::Get();
    LeaveOutOtherHandlers(subject, before, after);
    const std::vector<std::string> changes = before.FindChanges(after);
    if (changes.empty()) return true;
    before.Restore();
    subject.Fail("after " + step + " " + changes.front() + "; that is the host's, and a library leaves it alone");
    return false;
  });
}

void CheckStandardOutput(Subject& subject) {
  OutputCatcher output;
  WalkThrough(subject, [&](const std::string& step) {
    const std::string printed = output.Take();
    if (printed.empty()) return true;
    subject.Fail(step + " writes to standard output: \"" + printed +
                 "\"; that is for the host's answer, and a node says what it has to say through SetState");
    return false;
  });
}

}  // namespace ScEng

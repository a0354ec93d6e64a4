// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/ExaminationChild.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Host/Tools/Guard.h"
#include "Host/Tools/LoadProblem.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Validation/ProcessState.h"
#include "Host/Validation/Protocol.h"

namespace ScEng {
namespace {

class Examination {
 public:
  Examination(const std::filesystem::path& library, Channel& channel) : file_(library), channel_(channel) {}

  void Run() {
    UseLibrary();
    Begin("ending the program");
    is_complete_ = true;
  }

  /// What there is to say when all else has ended; nothing where the library has ended the process before.
  void Finish() {
    if (!is_complete_) return;
    Look();
    if (refusal_.empty()) {
      channel_.Answer(failures_, {});
    } else {
      channel_.Tell(Protocol::kRefused, refusal_);
    }
    _exit(0);
  }

 private:
  void UseLibrary() {
    Begin("loading it");
    void* const handle = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
      Refuse("plug-in \"" + file_.string() + "\" cannot be loaded: " + DescribeLoadProblem(file_));
      return;
    }
    Look();
    UseCatalog();
    Begin("letting it go");
    dlclose(handle);
    Look();
  }

  void Begin(const std::string& step) {
    step_ = step;
    channel_.Tell(Protocol::kAt, step);
  }

  void Refuse(const std::string& text) { refusal_ = text; }

  void UseCatalog() {
    Begin("reading its catalogue");
    Status status;
    std::shared_ptr<NodeLibrary> library = NodeLibrary::Load(file_, status);
    NodeCatalog catalog;
    if (library) status = catalog.AddLibrary(library);
    Look();
    if (status.IsError()) {
      Refuse(status.GetMessage());
      return;
    }
    for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
      const std::string name = descriptor->GetNodeFactory()->GetTypeName();
      Begin("making a node of type " + name);
      RefPtr<Node> node;
      // What it throws, whoever wants the node is told of.
      static_cast<void>(CallGuarded("CreateNode", [&] { node.Reset(descriptor->GetNodeFactory()->CreateNode()); }));
      Look();
      Begin("destroying a node of type " + name);
      node.Reset();
      Look();
    }
  }

  /// Notes what the step has left changed, once for each step.
  void Look() {
    const std::string printed = output_.Take();
    if (!printed.empty()) failures_.push_back("it writes to standard output while " + step_ + ": \"" + printed + "\"");
    const FloatingPointMode mode = FloatingPointMode::Get();
    const std::string change = mode_.FindChange(mode);
    if (!change.empty()) failures_.push_back("after " + step_ + " " + change);
    mode_.Restore();
    const ProcessState state = ProcessState::Get();
    for (const std::string& text : state_.FindChanges(state)) failures_.push_back("after " + step_ + " " + text);
    state_.Restore();
    state_.descriptors = state.descriptors;
  }

  std::filesystem::path file_;
  Channel& channel_;
  bool is_complete_ = false;
  std::string step_;
  std::string refusal_;
  std::vector<std::string> failures_;
  // The catcher comes first, since it takes a descriptor of its own.
  OutputCatcher output_;
  FloatingPointMode mode_ = FloatingPointMode::Get();
  ProcessState state_ = ProcessState::Get();
};

Examination* examination = nullptr;

}  // namespace

void RunExamination(const std::filesystem::path& library, Channel& channel) {
  examination = new Examination(library, channel);
  // Handlers run in turn, the latest first: those that the library registers run before this one.
  static_cast<void>(std::atexit([] { examination->Finish(); }));
  examination->Run();
  std::exit(0);
}

}  // namespace ScEng

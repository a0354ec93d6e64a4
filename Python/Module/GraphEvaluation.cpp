// SPDX-License-Identifier: Apache-2.0
//
// What a graph does with its nodes: checking, evaluating, running, drawing.
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Host/Documents/GraphPicture.h"
#include "Python/Module/AttributeValue.h"
#include "Python/Module/Errors.h"
#include "Python/Module/GraphObject.h"
#include "Python/Module/GraphUse.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/LogBridge.h"
#include "Python/Module/Samples.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

/// How a node has failed, in as many lines as it says.
std::string DescribeFailure(const Node& node) {
  return "node " + Quote(node.GetLabel()) + ": " + node.GetStateMessage();
}

/// What those of the nodes that have failed say.
ScEng::Findings ListFailures(const std::vector<const Node*>& nodes) {
  ScEng::Findings failures;
  for (const Node* const node : nodes) {
    if (node->IsInError()) failures.AddError(DescribeFailure(*node));
  }
  return failures;
}

/// The file of the output that a problem is about; false for problems of another kind.
bool FindOutputFile(const ScEng::RunReport& report, const std::string& problem, FailedFile& file) {
  for (const ScEng::OutputReport& output : report.outputs) {
    const std::string name = "output " + Quote(output.source);
    // An output without an image is no matter of files.
    const bool is_of_file = problem.starts_with(name + ": ") || problem.starts_with(name + " is not written");
    if (!is_of_file) continue;
    file = {output.file.string(), true};
    return true;
  }
  return false;
}

}  // namespace

ScEng::Findings GraphObject::Check() {
  const Use use(*this);
  ScEng::Findings findings;
  Interruption interruption;
  interruption.Run([&] {
    document_->CheckComplete(findings);
    document_->CheckOutputs(findings);
    if (findings.errors.empty()) document_->Advise(findings);
  });
  return findings;
}

/// The images that stand in for outputs during one evaluation.
class GraphObject::Sources {
 public:
  Sources(ScEng::GraphDocument& document) : document_(document) {}
  ~Sources() {
    for (const std::string& plug : plugs_) document_.SetSource(plug, {});
  }
  Sources(const Sources&) = delete;
  Sources& operator=(const Sources&) = delete;

  void Set(const std::string& plug, const SharedImage& image) {
    Require(document_.SetSource(plug, image.Lend()));
    plugs_.push_back(plug);
  }

 private:
  ScEng::GraphDocument& document_;
  std::vector<std::string> plugs_;
};

GraphObject::SharedImagePtr GraphObject::Evaluate(const std::string& written, const Inputs& inputs,
                                                  const py::object& progress, bool keep) {
  const Use use(*this);
  const std::string plug = FindPlug(written, PlugUse::kImageOutput, "");
  const std::string id = plug.substr(0, plug.rfind('.'));
  // Refused in the document's words where it is no image output. A node of unknown type is an error of its own.
  if (!document_->IsPlaceholder(id)) Require(document_->SetSource(plug, {}));
  Sources sources(*document_);
  for (const auto& [name, image] : inputs) {
    sources.Set(FindPlug(name, PlugUse::kImageOutput, "inputs[" + Quote(name) + "]: "), *image);
  }

  ScEng::RunReport report;
  ImagePtr image;
  Interruption interruption;
  Engine::Options options;
  // Results of images that are gone after this call are of no further use.
  options.release_results = !keep || !inputs.empty();
  options.cancellation = &interruption.GetCancellation();
  options.on_evaluated = TellProgress(progress, interruption);
  interruption.Run([&] { image = document_->Evaluate(plug, report, options); });
  DeliverLog();
  const std::vector<const Node*> nodes = FindSources(id);
  if (!image) {
    // What is wrong elsewhere in the graph does not concern this output.
    if (ScEng::Findings failures = ListFailures(nodes); !failures.errors.empty()) report.findings = std::move(failures);
    ThrowFailure(report, interruption, py::none());
  }
  for (const Node* const node : nodes) {
    if (!node->IsInError()) WarnLines(node->GetStateMessage());
  }
  // An image that only this function has is taken as it is.
  if (image->GetRefCount() == 1 && !FindOwner(*image)) {
    return std::make_shared<SharedImage>(SharedImage::Take(std::move(image)));
  }
  std::optional<SharedImage> kept;
  interruption.Run([&] { kept = SharedImage::Keep(*image); });
  return std::make_shared<SharedImage>(std::move(*kept));
}

py::list GraphObject::Run(const py::object& progress) {
  const Use use(*this);
  ScEng::Findings findings;
  document_->CheckComplete(findings);
  if (!findings.errors.empty()) ThrowDocumentError(HintAtClasses(findings.errors));

  ScEng::RunReport report;
  Interruption interruption;
  Engine::Options options;
  options.cancellation = &interruption.GetCancellation();
  options.on_evaluated = TellProgress(progress, interruption);
  interruption.Run([&] { report = document_->Run(nullptr, options); });
  DeliverLog();
  py::list written;
  for (const ScEng::WrittenFile& file : report.written) {
    written.append(py::make_tuple(file.file.string(), std::pair(file.header.size_x, file.header.size_y),
                                  ScEng::GetName(file.type)));
  }
  if (!report.findings.errors.empty()) ThrowFailure(report, interruption, written);
  Warn(report.findings.notes);
  return written;
}

std::string GraphObject::DrawSvg() {
  const Use use(*this);
  std::string svg;
  ScEng::Status status;
  Interruption interruption;
  interruption.Run([&] {
    ScEng::Findings findings;
    document_->CheckComplete(findings);
    document_->CheckOutputs(findings);
    status = ScEng::DrawSvg(*document_, findings.errors, svg);
  });
  if (status.IsError()) ThrowValueNodesError(status.GetMessage());
  return svg;
}

std::vector<const Node*> GraphObject::FindSources(const std::string& id) const {
  std::unordered_map<std::string, std::vector<std::string>> before;
  for (const ScEng::DocumentConnection& connection : document_->GetConnections()) {
    before[connection.to.substr(0, connection.to.rfind('.'))].push_back(
        connection.from.substr(0, connection.from.rfind('.')));
  }
  std::vector<std::string> pending{id};
  std::unordered_set<std::string> seen{id};
  while (!pending.empty()) {
    const std::string next = std::move(pending.back());
    pending.pop_back();
    for (const std::string& source : before[next]) {
      if (seen.insert(source).second) pending.push_back(source);
    }
  }
  std::vector<const Node*> nodes;
  for (const std::string& one : document_->GetIds()) {
    const Node* const node = seen.contains(one) ? document_->FindNode(one) : nullptr;
    if (node != nullptr) nodes.push_back(node);
  }
  return nodes;
}

void GraphObject::ThrowFailure(const ScEng::RunReport& report, const Interruption& interruption,
                               const py::object& written) const {
  FailedRun run;
  run.problems = HintAtClasses(report.findings.errors);
  run.is_of_file = report.failure == ScEng::RunFailure::kFile;
  run.written = written;
  run.message = run.problems.empty() ? "there is no image" : run.problems.front();
  std::unordered_map<std::string, const Node*> failed;
  for (const std::string& id : document_->GetIds()) {
    const Node* const node = document_->FindNode(id);
    if (node != nullptr && node->IsInError()) failed.emplace(ScEng::MakeLine(DescribeFailure(*node)), node);
  }
  // Of problems of several kinds, the first one that the class of the error stands for is told of.
  for (const std::string& problem : run.problems) {
    const auto found = failed.find(problem);
    if (found == failed.end()) {
      if (!run.is_of_file || !FindOutputFile(report, problem, run.file)) continue;
      run.message = problem;
      break;
    }
    const Node& node = *found->second;
    const bool is_of_file = node.GetState() == Node::State::kFileError;
    if (is_of_file != run.is_of_file) continue;
    run.message = DescribeFailure(node);
    run.cause = interruption.FindFailure(&node);
    if (is_of_file) run.file = FindFile(node);
    break;
  }
  // A node in Python says in further lines where it failed.
  for (std::string& problem : run.problems) {
    const auto found = failed.find(problem);
    if (found == failed.end()) continue;
    const std::string description = DescribeFailure(*found->second);
    problem = ScEng::MakeLine(description.substr(0, description.find('\n')));
  }
  ThrowRunError(run);
}

}  // namespace ValuePython

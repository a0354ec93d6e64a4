// SPDX-License-Identifier: Apache-2.0
//
// Evaluates an output of a document for a file that the document does not name, and uses the samples in memory.

#include <Host/Documents/GraphDocument.h>
#include <Host/Nodes/HostNodes.h>
#include <Host/Tools/NodeLibrary.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

int Fail(const std::string& message) {
  std::fprintf(stderr, "run-document: %s\n", message.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) return Fail("usage: run-document LIBRARY GRAPH READER FILE NODE.PLUG");

  ScEng::Status status;
  std::shared_ptr<ScEng::NodeLibrary> library = ScEng::NodeLibrary::Load(argv[1], status);
  if (!library) return Fail(status.GetMessage());
  const std::shared_ptr<ScEng::NodeCatalog> catalog = ScEng::CreateHostCatalog();
  status = catalog->AddLibrary(std::move(library));
  if (status.IsError()) return Fail(status.GetMessage());

  ScEng::GraphDocument document(catalog);
  ScEng::Findings findings;
  if (!document.Load(argv[2], findings) || !findings.errors.empty()) return Fail(findings.errors.front());
  status = document.SetInput(argv[3], argv[4]);
  if (status.IsError()) return Fail(status.GetMessage());

  ScEng::RunReport report;
  const ImagePtr image = document.Evaluate(argv[5], report);
  if (!image) return Fail(report.findings.errors.front());
  double sum = 0.0;
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) sum += static_cast<double>(image->GetConstArray()[i]);
  std::printf("%d x %d, mean %.4f\n", image->GetSizeX(), image->GetSizeY(),
              sum / static_cast<double>(image->GetNumSamples()));
  return 0;
}

// SPDX-License-Identifier: Apache-2.0
//
// A whole host in one file: it loads a node library, connects a reader to the library's "Value Add", evaluates the two
// nodes and writes the result.

#include <Host/Files/ImageFile.h>
#include <Host/Nodes/HostNodes.h>
#include <Host/Tools/Engine.h>
#include <Host/Tools/NodeLibrary.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

int Fail(const std::string& message) {
  std::fprintf(stderr, "host-program: %s\n", message.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return Fail("usage: host-program LIBRARY INPUT OUTPUT");

  // The catalogue: the host's own node types, then those of the library.
  ScEng::Status status;
  std::shared_ptr<ScEng::NodeLibrary> library = ScEng::NodeLibrary::Load(argv[1], status);
  if (!library) return Fail(status.GetMessage());
  const std::shared_ptr<ScEng::NodeCatalog> catalog = ScEng::CreateHostCatalog();
  status = catalog->AddLibrary(std::move(library));
  if (status.IsError()) return Fail(status.GetMessage());
  const NodeInterface* add_type = catalog->FindTypeName("ImageValueAddNode");
  if (add_type == nullptr) return Fail("the library has no ImageValueAddNode");

  // The graph. The engine owns the nodes and keeps the catalogue, and so the library, for as long as it lives.
  Engine engine(catalog);
  Node* reader = engine.CreateNode(ScEng::kImageReaderType);
  Node* add = engine.CreateNode(add_type->GetNodeType());
  reader->GetAttribute("path")->SetString(argv[2], false);
  add->GetAttribute("constant")->SetNumber(0.25, false);
  status = engine.Connect(reader, "image", 0, add, "image", 0);
  if (status.IsError()) return Fail(status.GetMessage());

  // How each node fared is in its state.
  engine.Evaluate({{add, 0}});
  for (const Node* node : {reader, add}) {
    if (node->IsInError()) return Fail(node->GetName() + ": " + node->GetStateMessage());
  }
  const Image* image = add->GetOutputImage(0);
  if (image == nullptr) return Fail("Value Add has no output");

  // The image stays the node's; nothing is copied.
  std::printf("%d x %d, %s, declared %g to %g\n", image->GetSizeX(), image->GetSizeY(),
              ColorMode::GetName(image->GetColorMode()), static_cast<double>(image->GetValueLow()),
              static_cast<double>(image->GetValueHigh()));
  std::vector<std::string> notes;
  status = ScEng::WriteImageFile(*image, argv[3], {.type = ScEng::SampleType::kFloat}, notes);
  for (const std::string& note : notes) std::printf("note: %s\n", note.c_str());
  return status.IsError() ? Fail(status.GetMessage()) : 0;
}

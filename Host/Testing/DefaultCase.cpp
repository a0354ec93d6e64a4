// SPDX-License-Identifier: Apache-2.0
#include "Host/Testing/DefaultCase.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <string>

#include "Host/Testing/TestContext.h"
#include "Host/Tools/Engine.h"

namespace {

constexpr NodeType kWaves{10, 16, 32};

std::string ToLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

}  // namespace

bool RenderDefaultCase(const NodeRecord& record) {
  const std::string folder = ToLower(std::string(record.library->name) + "/" + record.type_name);
  TestContext context("output/nodes/" + folder, record.display_name);
  context.InitializeTest();
  context.InitTimer();
  Node* waves = Engine::Get()->CreateNode(kWaves);
  Node* node = Engine::Get()->CreateNode(record.type);
  if (waves == nullptr || node == nullptr) {
    std::cout << "ERROR: Failed to create " << (waves == nullptr ? "waves" : record.display_name) << " node"
              << std::endl;
    return false;
  }
  for (std::size_t input = 0; input < node->GetNumRegularInputs(); ++input) {
    const PlugRecord& plug = node->GetInplugs()[input];
    if (plug.type == PlugType::kImage) Engine::Get()->ConnectNodes(waves, "image", 0, node, plug.name, 0);
  }
  context.case_name = "waves";
  return context.DoTest(node, 0, 0);
}

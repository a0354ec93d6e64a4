// SPDX-License-Identifier: Apache-2.0
#include <string>

#include "Value/Nodes/Condition/ImageValueConditionNode.h"
#include "Value/SelfTests/SelfTests.h"
#include "Value/SelfTests/TestGraph.h"

bool SelfTests::RunCondition() {
  TestContext context("output/nodes/value/condition", "Value.DLL Value Condition");
  context.InitializeTest();
  context.InitTimer();
  Node* checker = Engine::Get()->CreateNode(kChecker);
  Node* condition = Engine::Get()->CreateNode(ImageValueConditionNode::kRecord.type);
  if (checker == nullptr || condition == nullptr) return Fail("ERROR: Failed to create checker node");
  SetFrame(*checker, {0.0, 0.0, 64.0, 64.0});
  SetCells(*checker, {16.0, 16.0});
  bool passed = Render(context, *checker, "checker");
  Connect(*checker, *condition);
  for (const std::string& word : condition->GetAttribute("condition")->GetChoices()) {
    if (word == "v_lt_a") SetNumber(*condition, "a", static_cast<double>(0.33F));
    if (word == "a_lt_v_lt_b") SetNumber(*condition, "b", 0.66);
    SetChoice(*condition, "condition", word);
    passed &= Render(context, *condition, "checker-condition-" + word);
  }
  return passed;
}

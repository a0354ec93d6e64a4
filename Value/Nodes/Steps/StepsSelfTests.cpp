// SPDX-License-Identifier: Apache-2.0
#include "Value/SelfTests/SelfTests.h"
#include "Value/SelfTests/TestGraph.h"

bool SelfTests::RunAbsolute() {
  TestContext context("output/nodes/value/absolute", "Value.DLL Value Absolute");
  context.InitializeTest();
  context.InitTimer();
  Node* waves = Engine::Get()->CreateNode(kWaves);
  Node* absolute = Engine::Get()->CreateNode({10, 320, 26});
  if (waves == nullptr || absolute == nullptr) return Fail("ERROR: Failed to create waves node");
  SetNumber(*waves, "height", 2.0);
  bool passed = Render(context, *waves, "waves");
  Connect(*waves, *absolute);
  passed &= Render(context, *absolute, "waves-absolute");
  return passed;
}

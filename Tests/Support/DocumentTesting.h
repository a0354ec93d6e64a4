// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "Host/Documents/GraphDocument.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/NodeLibrary.h"

/// What the tests of documents share.
namespace Testing {

/// The host's own node types and those of the node library.
inline std::shared_ptr<ScEng::NodeCatalog> GetCatalog() {
  // Never destroyed: libraries behind the node library keep memory when they are unloaded, and a leak check could no
  // longer tell whose it is.
  static const auto& catalog = *new auto([] {
    auto made = ScEng::CreateHostCatalog();
    ScEng::Status status;
    auto library = ScEng::NodeLibrary::Load(VALUE_LIBRARY_FILE, status);
    EXPECT_NE(library, nullptr) << status.GetMessage();
    if (library) made->AddLibrary(std::move(library));
    return made;
  }());
  return catalog;
}

/// Double quotes in place of single ones, which are easier to read in a test.
inline std::string Quoted(std::string text) {
  std::replace(text.begin(), text.end(), '\'', '"');
  return text;
}

/// A document with these lists; single quotes stand for double ones.
inline std::string MakeText(const std::string& nodes, const std::string& connections = "",
                            const std::string& outputs = "") {
  return Quoted("{'format': 'value-graph', 'version': 1, 'nodes': [" + nodes + "], 'connections': [" + connections +
                "], 'outputs': [" + outputs + "]}");
}

/// What a document is saved as; the test fails where it cannot be saved.
inline std::string Save(const ScEng::GraphDocument& document) {
  std::string text;
  const ScEng::Status status = document.SaveText(text);
  EXPECT_FALSE(status.IsError()) << status.GetMessage();
  return text;
}

inline ScEng::Findings LoadText(ScEng::GraphDocument& document, const std::string& text,
                                const ScEng::LoadOptions& options = {}) {
  ScEng::Findings findings;
  document.LoadText(text, {}, "graph.json", findings, options);
  return findings;
}

}  // namespace Testing

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Apps/Value/Arguments.h"
#include "Apps/Value/LineAdvice.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/NodeLibrary.h"

/// The node or the document that a command line names, loaded when it is first asked for.
class LineSubject : public LineAdvice {
 public:
  LineSubject(const CLI::App& app, const std::vector<std::string>& words) : line_(ReadArguments(app, words)) {}

  std::vector<Setting> FindSettings(const Argument& option, std::span<const Argument> following) override;
  std::vector<std::string> FindLeftSides(const CLI::Option& option, const std::string& node) override;

 private:
  /// The words of the line, those behind an unknown option only where they are asked for: they may be its value.
  [[nodiscard]] std::vector<std::string> ListWords(bool with_doubtful) const;
  /// Null where the line names neither, or it cannot be loaded.
  ScEng::GraphDocument* GetDocument();
  void Load();
  void LoadCatalog();
  void LoadNode();
  void LoadDocument();
  [[nodiscard]] bool Takes(const char* positional) const;

  Arguments line_;
  bool is_loaded_ = false;
  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::unique_ptr<ScEng::GraphDocument> document_;
  /// Whether the document is a single node, whose id people do not write.
  bool is_node_ = false;
};

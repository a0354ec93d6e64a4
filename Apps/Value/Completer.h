// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "Apps/Value/Common.h"
#include "Apps/Value/CompleteCandidates.h"
#include "Apps/Value/CompleteLine.h"

/// Finds what the last word of a command line may become. The catalogue and the document are loaded when they are first
/// needed: most words need neither.
class Completer : public Command {
 public:
  Completer(const TypedLine& line, const CommonOptions& common, Reporter& reporter)
      : Command(common, reporter), line_(line) {}

  [[nodiscard]] Candidates Find();

  /// The options of the line that say which node libraries there are.
  static CommonOptions ReadLibraries(const TypedLine& line);

 private:
  CLI::App* Declare(CLI::App&) override { return nullptr; }
  ExitCode Run() override { return ExitCode::kDone; }

  void AddCommands(Candidates& candidates) const;
  void AddOptionNames(Candidates& candidates) const;
  void AddPositional(Candidates& candidates);
  void AddValue(Candidates& candidates);
  void AddDevices(Candidates& candidates) const;
  void AddEndings(Candidates& candidates) const;

  const ScEng::NodeCatalog* GetCatalog();
  /// The node that the line names; null where it names none.
  const Node* GetNode();
  const ScEng::GraphDocument* GetDocument();
  /// Whether the command is about one node rather than a document.
  [[nodiscard]] bool TakesNode() const;
  [[nodiscard]] const CLI::Option* FindPositional(const char* name) const;

  const TypedLine& line_;
  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  ScEng::RefPtr<Node> node_;
  std::unique_ptr<ScEng::GraphDocument> document_;
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeLibrary.h"

/// What the word that is being typed may become.
struct Candidates {
  struct Word {
    std::string text;
    std::string about;
    /// Whether more of the same word follows, a value behind "name=" for example.
    bool is_open = false;
  };
  enum class Files { kNone, kAny, kFolders };

  std::vector<Word> words;
  /// Files that the shell completes itself: what is typed behind `files_prefix` is the start of one.
  Files files = Files::kNone;
  std::string files_prefix;
  /// The ending of the files that are meant, without a dot; empty for any.
  std::string ending;

  void Add(std::string text, std::string about = {}, bool is_open = false);
  void AddFiles(std::string prefix = {}, std::string with_ending = {});
  void AddFolders();
  /// Keeps the words that start with `typed`, in any case of letters, and go on behind it.
  void Filter(std::string_view typed);
};

/// What a person may write for a node type behind the words of its name that are already there: the rest of the display
/// names, and class names where the word has begun as one.
void AddNodeNames(const ScEng::NodeCatalog& catalog, const std::vector<std::string>& before, const std::string& word,
                  Candidates& candidates);

/// NAME=VALUE for the attributes of a node, each text behind `prefix`: the names, and behind a name its values.
void AddSettings(const Node& node, const std::string& prefix, const std::string& word, Candidates& candidates);

/// PLUG=FILE for the image plugs of a node where it has several; a file alone goes as well.
void AddPlugFiles(const Node& node, bool is_input, const std::string& word, Candidates& candidates);

/// NODE.ATTRIBUTE=VALUE for the nodes of a document.
void AddDocumentSettings(const ScEng::GraphDocument& document, const std::string& word, Candidates& candidates);

/// NODE=FILE for the readers of a document.
void AddDocumentInputs(const ScEng::GraphDocument& document, const std::string& word, Candidates& candidates);

/// NODE.PLUG=FILE for the image outputs of a document's nodes.
void AddDocumentOutputs(const ScEng::GraphDocument& document, const std::string& word, Candidates& candidates);

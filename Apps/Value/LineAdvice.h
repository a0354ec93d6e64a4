// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <span>
#include <string>
#include <vector>

#include "Apps/Value/Arguments.h"

/// What the node or the document of a command line has to say about words that are wrong. Asked only where one is,
/// since the answers may need node libraries and a document to be loaded.
class LineAdvice {
 public:
  /// An attribute that was typed as if it were an option, as it is set.
  struct Setting {
    /// "seamless=true", or "raised.constant=3" in a document.
    std::string text;
    /// Whether the attribute takes the value that was typed.
    bool is_accepted = false;
  };

  LineAdvice() = default;
  virtual ~LineAdvice() = default;
  LineAdvice(const LineAdvice&) = delete;
  LineAdvice& operator=(const LineAdvice&) = delete;

  /// Every attribute that an option may stand for. `following` is what was typed behind it.
  virtual std::vector<Setting> FindSettings(const Argument& option, std::span<const Argument> following) = 0;
  /// What may stand before the "=" of an option whose value starts with a node of the document; of one node alone where
  /// `node` names it. Nothing where that cannot be told.
  virtual std::vector<std::string> FindLeftSides(const CLI::Option& option, const std::string& node) = 0;
};

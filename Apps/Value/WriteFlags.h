// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "Host/Documents/GraphDocument.h"
#include "Host/Util/Status.h"

/// The options of a command that say how its files are written.
class WriteFlags {
 public:
  void Declare(CLI::App& app);
  /// Makes all outputs and enabled writers of a document follow what was given. An attribute that a connection feeds
  /// stays.
  ScEng::Status ApplyTo(ScEng::GraphDocument& document) const;
  /// An error where a file of the document cannot be written so, as far as that is known before it is. Ask when all
  /// outputs have their names.
  [[nodiscard]] ScEng::Status Check(const ScEng::GraphDocument& document) const;

 private:
  std::string type_;
  std::string samples_;
  std::string opacity_;
  std::string compression_;
  bool strips_ = false;
};

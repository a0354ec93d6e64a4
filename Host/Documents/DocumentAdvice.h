// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Documents/ImageFlow.h"

namespace ScEng {

/// What can be told of a run before it starts: outputs that will not be written, and settings to no purpose.
class DocumentAdvice {
 public:
  explicit DocumentAdvice(const GraphDocument& document) : content_(*document.content_), flow_(content_) {}

  void CheckOutputs(Findings& findings) const;
  /// Attributes that are set although a connection feeds them.
  void NoteFedSettings(Findings& findings) const;
  /// Choices that a text node feeds with a word that they do not have.
  void NoteForeignWords(Findings& findings) const;
  void NoteIdleSettings(Findings& findings, AdviceScope scope) const;

 private:
  /// Who wants to write into each folder that is not there.
  using MissingFolders = std::map<std::filesystem::path, std::vector<std::string>>;

  void CheckSink(const DocumentEntry& sink, MissingFolders& folders, Findings& findings) const;
  void CheckImage(const std::string& who, const DocumentEntry& entry, unsigned outplug, Findings& findings) const;
  static void CheckFile(const std::string& who, const std::filesystem::path& file, MissingFolders& folders,
                        Findings& findings);
  /// Notes what `describe` says of each attribute.
  void NoteSettings(std::string (DocumentAdvice::*describe)(const DocumentEntry&, const Attribute&) const,
                    Findings& findings) const;
  /// Whether the document or anybody since has set an attribute.
  static bool IsSet(const DocumentEntry& entry, const Attribute& attribute);
  /// Why it is to no purpose that an attribute is set; empty where it is to some.
  [[nodiscard]] std::string DescribeFed(const DocumentEntry& entry, const Attribute& attribute) const;
  [[nodiscard]] std::string DescribeIdle(const DocumentEntry& entry, const Attribute& attribute) const;
  [[nodiscard]] std::string DescribeIdleInItself(const DocumentEntry& entry, const Attribute& attribute) const;
  /// Whether what an attribute depends on comes from a node of unknown type.
  [[nodiscard]] bool DependsOnPlaceholder(const DocumentEntry& entry, const Attribute& attribute) const;

  GraphDocument::Content& content_;
  ImageFlow flow_;
};

}  // namespace ScEng

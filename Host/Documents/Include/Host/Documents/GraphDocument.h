// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Documents/Api.h"
#include "Host/Documents/DocumentParts.h"
#include "Host/Documents/Findings.h"
#include "Host/Files/ImageFile.h"
#include "Host/Files/WrittenFile.h"
#include "Host/Image/Image.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Util/RefCounter.h"
#include "Host/Util/Status.h"

namespace ScEng {

struct DocumentEntry;

/// How a run failed; the larger outranks the smaller.
enum class RunFailure { kNone = 0, kNode = 1, kFile = 2 };

/// What became of one output of a run.
struct OutputReport {
  /// "node.plug"
  std::string source;
  std::filesystem::path file;
  bool written = false;
  ImageHeader header;
};

struct RunReport {
  Findings findings;
  RunFailure failure = RunFailure::kNone;
  /// Whether the evaluation was stopped before its end. What was written until then stays.
  bool canceled = false;
  std::vector<OutputReport> outputs;
  /// Every file that was written, for outputs and by writers, in the order of writing.
  std::vector<WrittenFile> written;
};

/// What is done with types that the catalogue does not have, and with attributes that a node does not have or take.
enum class UnknownTypes {
  /// It is an error. A placeholder stands in for the node, so that the rest of the document can be checked.
  kRefuse,
  /// The node becomes a placeholder, the attribute keeps its default until it is set; what the document says is saved
  /// again, and `CheckComplete` tells of it. Programs that edit documents load this way.
  kKeep,
};

/// How much is said of settings that have no effect.
enum class AdviceScope {
  kAll,
  /// Not of those that other settings of the same node make idle: whoever turns a slider to zero keeps the others.
  kWithoutSiblings,
};

struct LoadOptions {
  UnknownTypes unknown_types = UnknownTypes::kRefuse;
};

/// A graph of nodes with what belongs to it in a JSON document: loaded or built node by node, changed, run and saved.
///
/// Nodes are addressed by their ids, plugs and attributes as "id.name" (split at the last dot). An id has 1 to 200
/// characters, none of them a control character or "=". Every message names what it is about. Used on one thread at a
/// time; separate documents are independent. The structure is changed through the document, not through its engine.
class HOST_DOCUMENTS_API GraphDocument {
 public:
  explicit GraphDocument(std::shared_ptr<const NodeCatalog> catalog);
  ~GraphDocument();
  GraphDocument(const GraphDocument&) = delete;
  GraphDocument& operator=(const GraphDocument&) = delete;

  // ---- Loading and saving ----

  /// Reads a document into this (empty) graph. All its errors and notes go to `findings`. False when the file itself
  /// could not be read; the one error says why. Relative paths start from the folder of the file.
  bool Load(const std::filesystem::path& file, Findings& findings, const LoadOptions& options = {});
  /// The same from text. `name` stands for the file in messages, and relative paths start from `folder`.
  void LoadText(std::string_view text, const std::filesystem::path& folder, const std::string& name, Findings& findings,
                const LoadOptions& options = {});

  /// Writes the document to a file, whole or not at all. Paths are written as they are, so that relative ones have
  /// their meaning in the folder that the document was loaded from. What is saved, loaded and saved again is the same
  /// to the byte. An error when the file cannot be written, or an attribute holds what JSON cannot (NaN, infinities,
  /// text that is no UTF-8).
  [[nodiscard]] Status Save(const std::filesystem::path& file) const;
  /// The same as text.
  [[nodiscard]] Status SaveText(std::string& text) const;

  // ---- Nodes ----

  /// Adds a node; null, and an error, when the id is taken or not one, or the catalogue has no such type.
  Node* AddNode(const std::string& id, const NodeType& type, Status& status);
  /// Removes a node, or a placeholder, with its connections and outputs.
  Status RemoveNode(const std::string& id);
  /// Gives a node another id; everything that names it follows.
  Status RenameNode(const std::string& id, const std::string& now);
  /// Moves a node to a place in the order of the document, from 0; the last place when it is beyond the end.
  Status MoveNode(const std::string& id, std::size_t place);

  /// Null when there is no such node, and for a placeholder.
  [[nodiscard]] Node* FindNode(const std::string& id) const;
  /// Whether the id is taken, by a node or a placeholder.
  [[nodiscard]] bool HasId(const std::string& id) const;
  [[nodiscard]] bool IsPlaceholder(const std::string& id) const;
  [[nodiscard]] std::string GetId(const Node& node) const;
  /// All ids in the order of the document, that of adding unless nodes were moved.
  [[nodiscard]] const std::vector<std::string>& GetIds() const;

  Status SetEnabled(const std::string& id, bool enabled);
  /// True where there is no such node.
  [[nodiscard]] bool IsEnabled(const std::string& id) const;
  /// Where an editor shows the node; y grows downwards. Finite.
  Status SetPosition(const std::string& id, const std::optional<Point>& position);
  [[nodiscard]] std::optional<Point> GetPosition(const std::string& id) const;
  /// What people wrote about the node; empty for nothing.
  Status SetNote(const std::string& id, const std::string& note);
  [[nodiscard]] std::string GetNote(const std::string& id) const;

  // ---- Connections ----

  /// Connects "from.plug" to "to.plug" at a connection index.
  Status Connect(const std::string& from, const std::string& to, unsigned index);
  /// Removes exactly this connection.
  Status Disconnect(const std::string& from, const std::string& to, unsigned index = 0);
  /// All connections, in the order in which they were made.
  [[nodiscard]] std::vector<DocumentConnection> GetConnections() const;

  // ---- Attributes ----

  /// Sets "node.attribute" from text: a number, true or false, a choice word, a string, or numbers separated by commas.
  /// Old names and the clamping of numbers are as in documents; relative paths start from the working directory.
  Status SetAttribute(const std::string& attribute, const std::string& text, std::vector<std::string>& notes);
  /// Sets "node.attribute" to a value of the attribute's kind, a path as it is to stand in the document. Numbers out of
  /// bounds are clamped with a note; an error for what a document cannot hold (NaN, infinities, text that is no UTF-8).
  Status SetAttributeValue(const std::string& attribute, const PlugValue& value, std::vector<std::string>& notes);
  /// Sets the path of a reader; an error where a connection feeds that path.
  Status SetInput(const std::string& id, const std::filesystem::path& file);

  // ---- Outputs ----

  /// Asks for the image of an output plug as a file. Words and plug are checked.
  Status AddOutput(const DocumentOutput& output);
  /// The same, with a path that is relative to the working directory.
  Status AddOutput(const std::string& plug, const std::filesystem::path& file,
                   std::optional<SampleType> type = std::nullopt);
  [[nodiscard]] const std::vector<DocumentOutput>& GetOutputs() const;
  /// Replaces an output; the one before stays on an error.
  Status SetOutput(std::size_t index, const DocumentOutput& output);
  Status RemoveOutput(std::size_t index);
  /// Removes the requests for an output plug, to make room for `file` where given; answers one whose file has the same
  /// ending, if there was any.
  std::optional<DocumentOutput> RemoveOutputs(const std::string& plug, const std::filesystem::path& file = {});
  /// How a run packs the samples of the files that it writes, in the words of `WriteOptions::compression`. No part of
  /// the document.
  void SetCompression(const std::string& compression);

  /// Renames every file that a run would write, outputs and writers alike, by `rename(file)`. Writers whose path is fed
  /// by a connection are refused.
  Status RenameOutputs(const std::function<std::filesystem::path(const std::filesystem::path&)>& rename);
  /// Every file that a run would write, as far as that is known before it.
  [[nodiscard]] std::vector<std::filesystem::path> GetOutputFiles() const;
  /// The same, each by the name that is asked for: links are not followed.
  [[nodiscard]] std::vector<std::filesystem::path> GetOutputNames() const;
  /// The file of every enabled reader, as far as that is known before a run: by the reader's id.
  [[nodiscard]] std::map<std::string, std::filesystem::path> GetInputFiles() const;

  // ---- For people and editors ----

  [[nodiscard]] const std::vector<DocumentFrame>& GetFrames() const;
  Status SetFrames(std::vector<DocumentFrame> frames);
  [[nodiscard]] const std::optional<DocumentView>& GetView() const;
  Status SetView(std::optional<DocumentView> view);
  /// The folder that relative paths start from; empty for the working directory.
  [[nodiscard]] const std::filesystem::path& GetFolder() const;
  /// What the document gives as its "$schema"; empty for nothing.
  [[nodiscard]] const std::string& GetSchema() const;
  Status SetSchema(const std::string& schema);

  /// Not counted; an observer is removed before it goes.
  void AddObserver(DocumentObserver* observer);
  void RemoveObserver(DocumentObserver* observer);

  // ---- Evaluation ----

  /// What is missing or in the way once everything is set: placeholders, writers and needed readers without a path, two
  /// outputs with one path, words of outputs that the formats of this build cannot follow.
  void CheckComplete(Findings& findings) const;
  /// What else would keep outputs and enabled writers from being written, as far as that can be told ahead: images that
  /// cannot get there, missing folders, endings of no format. A run meets each of these on its own and writes
  /// everything else, so it need not ask. Also notes on attributes that are set although a connection feeds them.
  void CheckOutputs(Findings& findings) const;
  /// Notes on what is set to no purpose: attributes that have no effect where they stand, and a document that writes
  /// nothing. Ask when everything is set.
  void Advise(Findings& findings, AdviceScope scope = AdviceScope::kAll) const;

  /// Called while a run goes on: `done` of `total` nodes are evaluated, the last one with this id.
  using Progress = std::function<void(const std::string& id, std::size_t done, std::size_t total)>;

  /// Evaluates what the outputs and the enabled writers need and writes each file as soon as its image is there. A file
  /// that is to be written twice is written once; the second time is an error that names both. Results are released
  /// whatever `options` say; what else they ask for (progress inside nodes, a way to stop) is the engine's to do.
  RunReport Run(const Progress& progress = nullptr, const Engine::Options& options = {});

  /// Evaluates what one output needs and keeps every result, so that the next call computes only what has changed
  /// since. Writes nothing. The image, where there is one, is then at `node.GetOutputImage(outplug)`.
  RunReport Evaluate(Node& node, unsigned outplug, const Engine::Options& options = {});
  /// The same by "id.plug"; answers the image, or null and in `report` why there is none.
  ImagePtr Evaluate(const std::string& plug, RunReport& report, const Engine::Options& options = {});

  /// Lets an image stand in for what an image output "id.plug" delivers, so that neither the node nor what only it
  /// needs is evaluated for it. Null takes it back. Not part of what is saved.
  Status SetSource(const std::string& plug, ImagePtr image);

  /// The engine that owns the nodes.
  [[nodiscard]] Engine& GetEngine();

 private:
  friend class DocumentAdvice;
  friend class DocumentEdits;
  friend class DocumentReader;
  friend class DocumentRun;
  friend class DocumentWriter;
  friend class ImageFlow;
  struct Content;

  /// Adds a node of which nobody has been told yet.
  DocumentEntry* CreateNode(const std::string& id, const NodeType& type, Status& status);

  std::unique_ptr<Content> content_;
};

}  // namespace ScEng

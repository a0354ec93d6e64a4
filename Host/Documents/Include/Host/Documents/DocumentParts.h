// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "Host/Documents/Api.h"
#include "Host/Files/ImageFile.h"
#include "Host/Math/Geometry.h"

namespace ScEng {

/// A connection between two plugs, each "id.plug".
struct DocumentConnection {
  std::string from;
  /// An input, or the attribute that is fed.
  std::string to;
  /// The place among the connections of an input that takes many; 0 at any other.
  unsigned index = 0;

  friend bool operator==(const DocumentConnection&, const DocumentConnection&) = default;
};

/// A file that the image of an output plug is written to. What is left out, or empty, is left to the format.
struct DocumentOutput {
  /// "id.plug"
  std::string from;
  /// As it is written in the document: relative to its folder, either slash.
  std::string path;
  /// "auto", "float", "half", "uint16", "uint8" or "int16"; empty is "auto".
  std::string type;
  /// "unit" (integers hold 0..1) or "stored" (they hold the value itself).
  std::string samples;
  /// "auto", "keep" or "drop".
  std::string opacity;
  /// "keep" or "strip".
  std::string metadata;
  /// The layer of a file that has several.
  std::string layer;

  friend bool operator==(const DocumentOutput&, const DocumentOutput&) = default;
};

/// A titled box behind nodes, for people. It changes no result.
struct DocumentFrame {
  std::string title;
  /// Position and size, in the units of node positions; y grows downwards.
  Frame box;
  /// "#rrggbb", or empty.
  std::string color;

  friend bool operator==(const DocumentFrame&, const DocumentFrame&) = default;
};

/// How an editor last showed the document. It changes no result.
struct DocumentView {
  /// The point in the middle, in the units of node positions.
  std::optional<Point> center;
  /// Greater than 0; 1 is life size.
  std::optional<double> zoom;
  /// The output plug whose image is shown, "id.plug"; empty for none.
  std::string shown;

  friend bool operator==(const DocumentView&, const DocumentView&) = default;
};

/// Who wants to know how a document changes. Everything is told after it has happened, on the thread that does it. An
/// observer may add and remove observers then, and must not change the document.
///
/// Values of attributes that are set past the document, by a panel for example, are told by their nodes alone; see
/// `NodeObserver`.
class HOST_DOCUMENTS_API DocumentObserver {
 public:
  DocumentObserver() = default;
  DocumentObserver(const DocumentObserver&) = delete;
  DocumentObserver& operator=(const DocumentObserver&) = delete;
  virtual ~DocumentObserver();

  virtual void OnNodeAdded(const std::string& id);
  /// The connections and outputs of the node are gone by then, each told on its own.
  virtual void OnNodeRemoved(const std::string& id);
  /// Connections, outputs and the view name the node by its new id from now on, which is not told again.
  virtual void OnNodeRenamed(const std::string& before, const std::string& now);
  /// The enabled flag, position or note was set.
  virtual void OnNodeChanged(const std::string& id);
  /// A value was set through the document.
  virtual void OnAttributeChanged(const std::string& id, const std::string& attribute);
  virtual void OnOrderChanged();
  virtual void OnConnectionAdded(const DocumentConnection& connection);
  virtual void OnConnectionRemoved(const DocumentConnection& connection);
  virtual void OnOutputsChanged();
  virtual void OnFramesChanged();
  virtual void OnViewChanged();
};

}  // namespace ScEng

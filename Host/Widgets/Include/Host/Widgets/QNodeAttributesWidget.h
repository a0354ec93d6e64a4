// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <array>
#include <memory>
#include <string>

#include "Host/Widgets/Api.h"

class Node;
class NodeInterface;
class QStyle;
class QUndoStack;

/// The panel that edits the attributes of any node: one row per attribute, in id order.
///
/// It shows what the attributes hold at any time, whoever changes them. A row whose attribute is driven by a connection
/// says by what, and cannot be edited. Every change that is made in the panel is one command of an undo stack.
/// Docs/Panels.md describes the panel for those who use it.
///
/// The editors have object names, by which tests and style sheets find them: "<attribute>" is the main editor of a row
/// (of a point or frame the widget around its fields),
/// "<attribute>.slider" the slider of a number, "<attribute>.label" its label, "<attribute>.reset" the button that
/// resets it, "<attribute>.source" the text that says what drives it, "<attribute>.browse" the button that opens a file
/// dialog. The fields of a colour are "<attribute>.red" and so on, those of points and frames ".x", ".y", ".width" and
/// ".height".
///
/// Needs a `QApplication`. Used on its thread, which must be the one that the node is used on.
class HOST_WIDGETS_API QNodeAttributesWidget : public QWidget {
  Q_OBJECT

 public:
  /// How one attribute is shown. A descriptor hands the panel an array of them, one entry per attribute in id order.
  /// The order and the types of the fields are part of the interface between host and node libraries. What an entry
  /// leaves empty (labels, tooltip, suffix, a slider exponent of 0) is as the row of the attribute has it.
  struct AdditionalInfo {
    /// Whether the attribute has a row.
    bool visible = true;
    /// Whether the row can be edited.
    bool enabled = true;
    std::array<bool, 4> reserved{};
    /// The exponent of a slider's response: the value grows with that power of the distance from zero, so 2 gives fine
    /// control around zero over a wide range. 0 and 1 are linear.
    double slider_exponent = 0.0;
    /// The width of the editor, as a part of the width that is there for editors: from 0.1 to 1.
    double relative_width = 1.0;
    /// What is shown for the words of a choice: comma-separated, in the order of the words. A word without a label is
    /// shown as it is.
    std::string labels;
    /// The row's tooltip, in place of the text of the attribute's row.
    std::string tooltip;
    /// What stands behind the number in its field, for example " px".
    std::string suffix;
    /// Whether the row offers to go back to the default.
    bool resettable = true;
  };

  /// A panel for `node`, whose type `descriptor` describes; either may be null, and an empty panel is the result of a
  /// null node. `info` points to one entry per attribute, or is null; what is needed of it is copied, so the array may
  /// go when the constructor returns. `compact` leaves out the header and sets the rows closer, for panels inside other
  /// panels.
  ///
  /// The panel keeps no reference to the node. A node that goes before its panel leaves the panel empty.
  QNodeAttributesWidget(QWidget* parent, Node* node, const NodeInterface* descriptor, const AdditionalInfo* info,
                        bool compact);
  ~QNodeAttributesWidget() override;
  QNodeAttributesWidget(const QNodeAttributesWidget&) = delete;
  QNodeAttributesWidget& operator=(const QNodeAttributesWidget&) = delete;

  /// The node that is shown; null when there is none or it is gone.
  [[nodiscard]] Node* GetNode() const;

  /// Where the panel's commands go. They hold references to the node and its attributes, so they work when the panel is
  /// gone. A host clears the stack before it unloads a node library whose nodes were edited.
  [[nodiscard]] QUndoStack* GetUndoStack() const;
  /// Null stands for the default stack. `stack` outlives the panel.
  void SetUndoStack(QUndoStack* stack);
  /// The stack that new panels use: one per application, which owns it.
  [[nodiscard]] static QUndoStack* GetDefaultUndoStack();

  /// The style that panels are drawn with, for widgets of the host that stand beside one. The application owns it.
  [[nodiscard]] static QStyle* GetPanelStyle();

  /// Sets every attribute that can be edited to its default, in one command.
  void ResetToDefaults();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

/// The panel by its entry point, for those who load this library when the first panel is asked for instead of linking
/// it. Null where there is no `QApplication`.
extern "C" HOST_WIDGETS_API QWidget* HostCreateAttributesWidget(QWidget* parent, Node* node,
                                                                const NodeInterface* descriptor,
                                                                const QNodeAttributesWidget::AdditionalInfo* info,
                                                                bool compact);

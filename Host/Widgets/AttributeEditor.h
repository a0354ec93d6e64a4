// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointer>
#include <QUndoStack>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Widgets/AttributeCommand.h"
#include "Host/Widgets/QNodeAttributesWidget.h"

namespace ScEng {

/// What the editors of one panel share. Outlives them.
struct PanelContext {
  /// Null when the node is gone; the attributes are gone then, too.
  Node* node = nullptr;
  QPointer<QUndoStack> stack;

  [[nodiscard]] QUndoStack& GetStack() const;
};

/// The editor of one attribute: shows its value, and makes a command of every change that a person makes.
class AttributeEditor : public QWidget {
 public:
  /// The editor for the attribute's kind.
  static AttributeEditor* Make(PanelContext& context, Attribute& attribute,
                               const QNodeAttributesWidget::AdditionalInfo& info, QWidget* parent);

  /// Shows what the attribute holds.
  virtual void Refresh() = 0;
  /// The widget that the row's label stands for.
  [[nodiscard]] QWidget* GetMainInput() const { return inputs_.front(); }
  /// All widgets that take the focus, in tab order.
  [[nodiscard]] const std::vector<QWidget*>& GetInputs() const { return inputs_; }
  [[nodiscard]] bool IsAtDefault() const { return attribute_.GetValue() == attribute_.GetDefault(); }
  /// Sets the attribute to its default, as one command.
  void Reset();

 protected:
  AttributeEditor(PanelContext& context, Attribute& attribute, QWidget* parent);

  /// Makes a change and the command for it. Changes of one gesture become one command.
  void Commit(Gesture gesture, const std::function<void(Attribute&)>& change);
  void Commit(const std::function<void(Attribute&)>& change) { Commit(gesture_, change); }
  /// Ends the series of changes that one command undoes.
  void BeginGesture() { gesture_ = MakeGesture(); }
  [[nodiscard]] bool IsLive() const { return context_.node != nullptr; }
  [[nodiscard]] const Attribute& GetAttribute() const { return attribute_; }
  /// Takes a widget in among those that a person edits with. `part` is its name within the row, empty for the main one.
  void AddInput(QWidget* input, const std::string& part);

  /// The wheel is for scrolling unless a field has the focus, and undo is the panel's, not that of a text field.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool FilterKey(QEvent* event);

  PanelContext& context_;
  Attribute& attribute_;
  std::vector<QWidget*> inputs_;
  Gesture gesture_ = MakeGesture();
};

}  // namespace ScEng

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QTimer>
#include <QWidget>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Panel/Panel.h"
#include "Host/Image/Image.h"
#include "Host/Viewing/Look.h"

class QComboBox;
class QLineEdit;
class QPushButton;
class QUndoStack;

namespace ScEng {
class ViewImage;
class ViewerWidget;
struct ViewerContent;
}  // namespace ScEng

/// The window of `value panel`: the node's own panel beside a viewer of what the node makes of the image, which is
/// evaluated again after every change.
class PanelWindow : public QWidget, private NodeObserver {
  Q_OBJECT

 public:
  explicit PanelWindow(const PanelRequest& request);
  ~PanelWindow() override;
  PanelWindow(const PanelWindow&) = delete;
  PanelWindow& operator=(const PanelWindow&) = delete;

  /// Evaluates what is shown, now.
  void Evaluate();
  /// Writes the image that is shown, in the format that the file's ending names.
  ScEng::Status SaveImage(const std::filesystem::path& file, std::vector<std::string>& notes) const;
  /// The command that makes that image.
  [[nodiscard]] std::string GetCommand() const;

 private:
  /// An image that goes into the node, and what is shown of it.
  struct Source {
    ImagePtr image;
    std::shared_ptr<const ScEng::ViewImage> view;
  };

  void OnNodeChanged(Node& node) override;

  QWidget* MakeView();
  QWidget* MakePanel();
  QWidget* MakeBar(QWidget* view);
  QPushButton* AddButton(QWidget* bar, const QString& text, const QString& name, const QString& tooltip);
  QPushButton* AddUndoButton(QWidget* bar, const QString& text, const QString& name, QKeySequence::StandardKey key);
  [[nodiscard]] unsigned GetOutplug() const;
  /// Shows what goes into a node that makes no image itself.
  void ShowWithoutOutput();
  /// Adds what goes into the node to what is shown.
  void AddSources(ScEng::ViewerContent& content);
  /// Sets the range for the first image of an output, unless a person has set another.
  void FixRange(const Image& result, const Image* source);
  void AskForFile();
  void CopyCommand();
  void ShowCommand();

  PanelRequest request_;
  QTimer timer_;
  QUndoStack* stack_ = nullptr;
  ScEng::ViewerWidget* viewer_ = nullptr;
  QComboBox* outputs_ = nullptr;
  QPushButton* save_ = nullptr;
  QLineEdit* command_ = nullptr;
  std::vector<Source> sources_;
  /// The output whose range is fixed, or -1, and that range.
  int fixed_outplug_ = -1;
  ScEng::ValueRange fixed_;
};

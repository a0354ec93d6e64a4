// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <vector>

#include "Host/Widgets/Api.h"

namespace ScEng {

/// A place whose values are watched: one pixel or a rectangle of pixels, in document coordinates, so that it stays
/// where it is when images of other sizes and places are shown.
struct Probe {
  /// What people call it by, from 1.
  int number = 0;
  int x = 0;
  int y = 0;
  int width = 1;
  int height = 1;

  [[nodiscard]] bool IsPoint() const { return width == 1 && height == 1; }
  friend bool operator==(const Probe&, const Probe&) = default;
};

/// The probes of a viewer, and the one that is selected. Numbers stay: a probe that goes leaves a gap, which the next
/// one fills.
class HOST_WIDGETS_API ProbeList : public QObject {
  Q_OBJECT

 public:
  explicit ProbeList(QObject* parent = nullptr);

  [[nodiscard]] const std::vector<Probe>& GetProbes() const { return probes_; }
  /// Takes over probes; those without a number, or with one that is taken, get one.
  void SetProbes(const std::vector<Probe>& probes);
  /// Null where there is no such probe. Good until the next change.
  [[nodiscard]] const Probe* Find(int number) const;

  /// Adds a probe with the lowest free number, which is answered, and selects it.
  int Add(int x, int y, int width = 1, int height = 1);
  /// Puts the probe of this number elsewhere. Sizes below 1 become 1.
  void Place(const Probe& probe);
  void Remove(int number);

  /// The number of the selected probe; 0 for none.
  [[nodiscard]] int GetSelected() const { return selected_; }
  void Select(int number);
  /// Selects the next one, or with -1 the one before; begins anew at the end.
  void SelectNext(int direction);

 Q_SIGNALS:
  void Changed();
  void SelectionChanged();

 private:
  [[nodiscard]] int FindFreeNumber() const;

  std::vector<Probe> probes_;
  int selected_ = 0;
};

}  // namespace ScEng

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Tools/Api.h"

/// A node library as a whole, as its entry point `GetLibraryInterface` returns it. No virtual destructor: the host
/// never deletes one.
class HOST_TOOLS_API LibraryInterface {
 public:
  /// Slot 0. The library's name.
  [[nodiscard]] virtual std::string GetName() const = 0;
  /// Slot 1. A second line for lists of libraries; empty by default.
  [[nodiscard]] virtual std::string GetSecondaryText() const;
  virtual void LibraryHook1();
  virtual void LibraryHook2();
  virtual void LibraryHook3();

 protected:
  LibraryInterface() = default;
  ~LibraryInterface() = default;
};

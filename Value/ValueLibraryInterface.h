// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Tools/LibraryInterface.h"
#include "Value/Core/ValueLibrary.h"

/// The library object.
class ValueLibraryInterface : public LibraryInterface {
 public:
  [[nodiscard]] std::string GetName() const override { return kValueLibrary.name; }
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Apps/Value/Reporter.h"
#include "Host/Documents/Findings.h"
#include "Host/Util/Status.h"

/// Why something is not ready to run; `kDone` where it is.
struct Refusal {
  ExitCode code = ExitCode::kDone;
  std::string text;

  [[nodiscard]] bool IsRefused() const { return code != ExitCode::kDone; }
};

/// Wrong usage, where there is an error.
Refusal RefuseUsage(const ScEng::Status& status);

/// A document with errors, in one line.
Refusal RefuseDocument(const ScEng::Findings& findings);

// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/OutputRun.h"

OutputRun::~OutputRun() = default;

// SPDX-License-Identifier: Apache-2.0
//
// Everything that a node library is written with. Docs/AddANode.md walks through a node.
#pragma once

#include "Host/NodeKit/EvaluatedInputs.h"
#include "Host/NodeKit/EvaluationFrame.h"
#include "Host/NodeKit/NodeClass.h"
#include "Host/NodeKit/NodeDescriptor.h"
#include "Host/NodeKit/NodeLibraryExports.h"
#include "Host/NodeKit/OutputImages.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeRecord.h"

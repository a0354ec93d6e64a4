// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include "Host/Tools/NodeInterface.h"

/// The page of a node type as rich text, from what the type says of itself: its sentence, attributes and plugs. For a
/// type without a record, as those of other libraries may be, what its nodes have.
QString MakeNodeHelp(const NodeInterface& descriptor);

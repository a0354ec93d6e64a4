// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/NodeKit/Api.h"

class Node;
class NodeInterface;
class QWidget;
struct NodeRecord;

/// The host's panel for a node, owned by `parent`. Where a row of the record has labels or a slider exponent, the panel
/// is given its presentation entries, one per attribute. The library of widgets is loaded at the first call, since most
/// processes never show a panel. Null, with the reason in the log, where it cannot be loaded.
HOST_NODEKIT_API QWidget* CreateAttributesPanel(Node* node, QWidget* parent, const NodeInterface& descriptor,
                                                const NodeRecord& record);

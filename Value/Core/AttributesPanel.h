// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>

class Node;
class NodeInterface;
class QWidget;

/// What a node type wants of the panel's row of one attribute, beyond what the attribute itself says.
///
/// A node class that wants anything has a function `static std::vector<PanelEntry> GetPanelEntries()` with one entry
/// per attribute, in id order. The others have none.
struct PanelEntry {
  /// Labels for the words of a choice, comma-separated, in their order; empty to show the words.
  const char* labels = "";
  /// The exponent of a slider's response; 0 is linear.
  double slider_exponent = 0.0;
};

/// The host's panel for a node, owned by `parent`. The library of widgets is loaded at the first call, since most
/// processes never show a panel. Null, with the reason in the log, where it cannot be loaded.
QWidget* CreateAttributesPanel(Node* node, QWidget* parent, const NodeInterface& descriptor,
                               std::span<const PanelEntry> entries);

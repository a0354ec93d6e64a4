// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <optional>

#include "Apps/Editor/Canvas/PlugRef.h"
#include "Host/Documents/DocumentParts.h"

class GraphScene;

/// What a plug carries, in the user's language: "image", "number" and so on.
QString NamePlugKind(unsigned type);

/// Why a wire between two plugs would be refused, in a few words; empty where it fits. `replaced` is a connection that
/// goes when the wire comes.
QString FindMisfit(const GraphScene& scene, const PlugRef& one, const PlugRef& other,
                   const std::optional<ScEng::DocumentConnection>& replaced);

/// Whether a node has a row on its other side that a wire from `fixed` fits, as far as kinds go. Rows for attributes
/// count where the node shows them.
bool HasFittingRow(const GraphScene& scene, const PlugRef& fixed, const std::string& node);

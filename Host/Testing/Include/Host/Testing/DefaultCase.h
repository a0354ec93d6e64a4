// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Testing/Api.h"
#include "Host/Tools/NodeRecord.h"

/// The smallest self-test of a node type: one case, the node with its default attributes on the host's waves, each of
/// its image inputs connected to them. It is rendered as case "waves" in "output/nodes/<library>/<class name>", both in
/// lower case. False, with a line on standard output, where a node cannot be created.
HOST_TESTING_API bool RenderDefaultCase(const NodeRecord& record);

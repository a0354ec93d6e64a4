// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/ImageRerouteNode.h"

#include "Host/Nodes/HostLibrary.h"
#include "Host/Nodes/HostNodes.h"

constinit const NodeRecord ImageRerouteNode::kRecord{
    .library = &ScEng::kHostLibrary,
    .type_name = "ImageRerouteNode",
    .display_name = "Reroute",
    .type = ScEng::kImageRerouteType,
    .group = "Layout",
    .sentence = "Hands its image on unchanged, so that wires can be led round other nodes.",
    .keywords = "dot,pass through,bend,wire,elbow,corner,connection,tidy",
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = ReachesSamples,
    .has_image = HasImageOfAnyInput,
};

void ImageRerouteNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  // Inputs are constant since several nodes may have them; whoever takes the output is held to the same.
  output_.Set(const_cast<Image*>(EvaluatedInputs(*this, inputs).GetImage()));
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/AcyclicGraph.h"
#include "Host/Tools/Api.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/Evaluation/NodeVertex.h"
#include "Host/Tools/Node.h"
#include "Host/Util/Status.h"

/// The nodes of an engine, how they are connected, and the order in which they are evaluated.
class HOST_TOOLS_NO_EXPORT Engine::Graph {
 public:
  Graph() = default;
  ~Graph();
  Graph(const Graph&) = delete;
  Graph& operator=(const Graph&) = delete;

  /// Null, with the error in `status`, for a node that throws when it joins.
  Node* Add(Node* node, ScEng::Status& status);
  bool Delete(const Node* node);
  [[nodiscard]] ScEng::NodeVertex* Find(const Node* node) const;
  [[nodiscard]] std::vector<Node*> GetNodes() const;

  ScEng::Status Connect(ScEng::NodeVertex& from, unsigned from_outplug, ScEng::NodeVertex& to, unsigned to_inplug,
                        unsigned to_index);
  bool Disconnect(ScEng::NodeVertex& from, unsigned outplug, ScEng::NodeVertex& to, unsigned inplug, unsigned index);
  void SetOverride(ScEng::NodeVertex& vertex, unsigned outplug, const ImagePtr& image);

  Outcome Evaluate(const std::vector<Request>& requests, const Options& options);

 private:
  /// An evaluation that is running. Whoever is told of it may begin another one.
  struct Evaluation {
    // Null for those that were deleted meanwhile.
    std::vector<ScEng::NodeVertex*> order;
    Evaluation* outer;
  };

  void EvaluateInOrder(Evaluation& evaluation, std::size_t& done, const Options& options);
  static void ReleaseWaiting(const Evaluation& evaluation, std::size_t count, const Options& options);
  std::vector<ScEng::NodeVertex*> Plan(const std::vector<Request>& requests);
  void Disconnect(const ScEng::NodeConnection& connection);

  ScEng::AcyclicGraph order_;
  std::unordered_map<const Node*, std::unique_ptr<ScEng::NodeVertex>> vertices_;
  // The number of the latest one, and those that are running.
  std::uint64_t evaluation_ = 0;
  Evaluation* running_ = nullptr;
};

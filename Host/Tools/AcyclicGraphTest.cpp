// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/AcyclicGraph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

namespace {

using ScEng::AcyclicGraph;

/// A graph over numbered vertices.
class Numbered {
 public:
  explicit Numbered(std::size_t count) : vertices_(count) {
    for (auto& vertex : vertices_) graph_.Add(vertex);
  }

  bool Connect(std::size_t from, std::size_t to) {
    auto edge = std::make_unique<AcyclicGraph::Edge>(vertices_[from], vertices_[to]);
    if (!graph_.Connect(*edge)) return false;
    edges_.push_back(std::move(edge));
    return true;
  }
  void DisconnectAt(std::size_t edge) {
    graph_.Disconnect(*edges_[edge]);
    edges_.erase(edges_.begin() + static_cast<std::ptrdiff_t>(edge));
  }
  [[nodiscard]] std::size_t GetNumEdges() const { return edges_.size(); }
  [[nodiscard]] std::size_t GetNumSteps() const { return graph_.GetNumSteps(); }

  /// Whether every edge leads from an earlier to a later vertex, and each is listed at both ends.
  [[nodiscard]] bool IsInOrder() const {
    return std::all_of(edges_.begin(), edges_.end(), [](const auto& edge) {
      return AcyclicGraph::IsBefore(*edge->from, *edge->to) &&
             std::count(edge->from->out.begin(), edge->from->out.end(), edge.get()) == 1 &&
             std::count(edge->to->in.begin(), edge->to->in.end(), edge.get()) == 1;
    });
  }

 private:
  AcyclicGraph graph_;
  std::vector<AcyclicGraph::Vertex> vertices_;
  std::vector<std::unique_ptr<AcyclicGraph::Edge>> edges_;
};

TEST(AcyclicGraph, RefusesCycles) {
  Numbered graph(4);
  EXPECT_FALSE(graph.Connect(0, 0));
  EXPECT_TRUE(graph.Connect(0, 1));
  EXPECT_TRUE(graph.Connect(0, 1));
  EXPECT_FALSE(graph.Connect(1, 0));
  EXPECT_TRUE(graph.Connect(2, 0));
  EXPECT_TRUE(graph.Connect(3, 2));
  EXPECT_FALSE(graph.Connect(1, 3));
  EXPECT_FALSE(graph.Connect(1, 2));
  EXPECT_EQ(graph.GetNumEdges(), 4U);
  EXPECT_TRUE(graph.IsInOrder());
}

TEST(AcyclicGraph, TakesAnEdgeOnceWhatWasInItsWayIsGone) {
  Numbered graph(3);
  graph.Connect(0, 1);
  graph.Connect(1, 2);
  EXPECT_FALSE(graph.Connect(2, 0));
  graph.DisconnectAt(1);
  EXPECT_TRUE(graph.Connect(2, 0));
  EXPECT_FALSE(graph.Connect(1, 2));
  EXPECT_TRUE(graph.IsInOrder());
}

TEST(AcyclicGraph, TakesVerticesOutAndInAgain) {
  AcyclicGraph graph;
  AcyclicGraph::Vertex a;
  AcyclicGraph::Vertex b;
  AcyclicGraph::Vertex c;
  graph.Add(a);
  graph.Add(b);
  graph.Add(c);
  graph.Remove(b);
  EXPECT_TRUE(AcyclicGraph::IsBefore(a, c));
  graph.Add(b);
  EXPECT_TRUE(AcyclicGraph::IsBefore(c, b));
  graph.Remove(a);
  graph.Remove(c);
  graph.Remove(b);
  graph.Add(c);
  graph.Add(a);
  EXPECT_TRUE(AcyclicGraph::IsBefore(c, a));
}

TEST(AcyclicGraph, AnswersAsASearchOfTheWholeGraphWould) {
  std::mt19937 random(20240607);
  constexpr std::size_t kVertices = 40;
  for (int round = 0; round < 50; ++round) {
    Numbered graph(kVertices);
    std::vector<std::pair<std::size_t, std::size_t>> edges;
    for (int i = 0; i < 150; ++i) {
      if (!edges.empty() && random() % 4 == 0) {
        const std::size_t gone = random() % edges.size();
        edges.erase(edges.begin() + static_cast<std::ptrdiff_t>(gone));
        graph.DisconnectAt(gone);
        continue;
      }
      const std::size_t from = random() % kVertices;
      const std::size_t to = random() % kVertices;
      std::vector<std::size_t> reached{to};
      for (std::size_t next = 0; next < reached.size(); ++next) {
        for (const auto& [a, b] : edges) {
          if (a == reached[next] && std::find(reached.begin(), reached.end(), b) == reached.end()) reached.push_back(b);
        }
      }
      const bool closes_cycle = std::find(reached.begin(), reached.end(), from) != reached.end();
      ASSERT_EQ(graph.Connect(from, to), !closes_cycle);
      if (!closes_cycle) edges.emplace_back(from, to);
    }
    ASSERT_TRUE(graph.IsInOrder());
  }
}

// ---- Effort ----

constexpr std::size_t kMany = 100000;

/// The numbers up to a count in one of three orders.
std::vector<std::size_t> MakeOrder(std::size_t count, int kind) {
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (kind == 1) std::reverse(order.begin(), order.end());
  if (kind == 2) std::shuffle(order.begin(), order.end(), std::mt19937(7));
  return order;
}

TEST(AcyclicGraph, TakesAChainInAnyOrderInAFewStepsForEachEdge) {
  for (const int of_vertices : {0, 1, 2}) {
    for (const int of_edges : {0, 1, 2}) {
      // Vertex `chain[i]` feeds `chain[i + 1]`.
      const std::vector<std::size_t> chain = MakeOrder(kMany, of_vertices);
      Numbered graph(kMany);
      for (const std::size_t i : MakeOrder(kMany - 1, of_edges)) ASSERT_TRUE(graph.Connect(chain[i], chain[i + 1]));
      EXPECT_LE(graph.GetNumSteps(), 200 * kMany) << of_vertices << ", " << of_edges;
      EXPECT_FALSE(graph.Connect(chain[kMany - 1], chain[0]));
    }
  }
}

TEST(AcyclicGraph, TakesAHubInAFewStepsForEachEdge) {
  for (const bool hub_is_first : {true, false}) {
    for (const bool hub_feeds : {true, false}) {
      Numbered graph(kMany + 1);
      const std::size_t hub = hub_is_first ? 0 : kMany;
      for (std::size_t i = 0; i < kMany; ++i) {
        const std::size_t leaf = hub_is_first ? i + 1 : i;
        ASSERT_TRUE(hub_feeds ? graph.Connect(hub, leaf) : graph.Connect(leaf, hub));
      }
      EXPECT_LE(graph.GetNumSteps(), 200 * kMany) << hub_is_first << ", " << hub_feeds;
      EXPECT_FALSE(hub_feeds ? graph.Connect(hub_is_first ? 1 : 0, hub) : graph.Connect(hub, hub_is_first ? 1 : 0));
    }
  }
}

TEST(AcyclicGraph, TakesLayersInRandomOrderInAFewStepsForEachEdge) {
  // A hundred layers of a thousand vertices, each fed by two of the layer before.
  constexpr std::size_t kLayer = 1000;
  std::mt19937 random(3);
  const std::vector<std::size_t> places = MakeOrder(kMany, 2);
  std::vector<std::pair<std::size_t, std::size_t>> edges;
  for (std::size_t i = kLayer; i < kMany; ++i) {
    for (int k = 0; k < 2; ++k) {
      edges.emplace_back(places[i / kLayer * kLayer - kLayer + random() % kLayer], places[i]);
    }
  }
  std::shuffle(edges.begin(), edges.end(), random);
  Numbered graph(kMany);
  for (const auto& [from, to] : edges) ASSERT_TRUE(graph.Connect(from, to));
  EXPECT_LE(graph.GetNumSteps(), 400 * edges.size());
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace ScEng {

/// A directed graph that takes no edge which would close a cycle, and keeps its vertices in an order in which every
/// edge leads from an earlier to a later one.
///
/// An edge that agrees with the order costs nothing. For another one the graph looks for a cycle from both ends in
/// turn, only among the vertices that stand between the two, and is done when either search has ended; it then moves
/// what that search has found to the other end. So lists of edges in any order take little more time than their length.
class AcyclicGraph {
 public:
  struct Edge;

  /// What the graph keeps about a vertex. It stays at its place as long as it is in the graph.
  struct Vertex {
    Vertex() = default;
    Vertex(const Vertex&) = delete;
    Vertex& operator=(const Vertex&) = delete;

    // In no particular order.
    std::vector<Edge*> in;
    std::vector<Edge*> out;

   private:
    friend class AcyclicGraph;
    Vertex* before_ = nullptr;
    Vertex* after_ = nullptr;
    // Grows along the order.
    std::uint64_t label_ = 0;
    // The last searches that came by here.
    std::uint64_t forward_search_ = 0;
    std::uint64_t backward_search_ = 0;
  };

  struct Edge {
    Edge(Vertex& starts_at, Vertex& ends_at) : from(&starts_at), to(&ends_at) {}
    Edge(const Edge&) = delete;
    Edge& operator=(const Edge&) = delete;

    Vertex* from;
    Vertex* to;

   private:
    friend class AcyclicGraph;
    std::size_t place_in_from_ = 0;
    std::size_t place_in_to_ = 0;
  };

  AcyclicGraph();
  AcyclicGraph(const AcyclicGraph&) = delete;
  AcyclicGraph& operator=(const AcyclicGraph&) = delete;

  /// Puts a vertex without edges at the end of the order.
  void Add(Vertex& vertex);
  /// Takes out a vertex that has no edges any more.
  void Remove(Vertex& vertex);
  /// Adds an edge between vertices of this graph; false where it would close a cycle, and nothing is changed.
  bool Connect(Edge& edge);
  void Disconnect(Edge& edge);

  static bool IsBefore(const Vertex& a, const Vertex& b) { return a.label_ < b.label_; }

  /// How many edges were looked at and vertices moved so far, for tests of the effort.
  [[nodiscard]] std::size_t GetNumSteps() const { return steps_; }

 private:
  class Search;

  bool MakeRoom(Vertex& from, Vertex& to);
  void MoveAfter(std::vector<Vertex*>& moved, Vertex& place);
  void MoveBefore(std::vector<Vertex*>& moved, Vertex& place);
  static void Unlink(Vertex& vertex);
  void InsertAfter(Vertex& vertex, Vertex& place);
  void Relabel(Vertex& around);

  // Before the first and after the last vertex.
  Vertex first_;
  Vertex last_;
  std::uint64_t searches_ = 0;
  std::size_t steps_ = 0;
};

}  // namespace ScEng

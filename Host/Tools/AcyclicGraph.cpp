// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/AcyclicGraph.h"

#include <algorithm>

namespace ScEng {
namespace {

constexpr std::uint64_t kLastLabel = std::uint64_t{1} << 62;
/// The distance of vertices that are added at either end.
constexpr std::uint64_t kUsualGap = std::uint64_t{1} << 32;

}  // namespace

/// Follows edges from one vertex, forwards or backwards, one edge at a time.
class AcyclicGraph::Search {
 public:
  /// Looks for `goal` from `start`, among the vertices between the two.
  Search(Vertex& start, const Vertex& goal, bool forward, std::uint64_t number)
      : goal_(goal), forward_(forward), number_(number) {
    Visit(start);
  }

  [[nodiscard]] bool IsEnded() const { return next_vertex_ == found_.size(); }
  [[nodiscard]] bool HasFoundGoal() const { return has_found_goal_; }
  std::vector<Vertex*>& GetFound() { return found_; }

  void LookAtNextEdge() {
    const Vertex& vertex = *found_[next_vertex_];
    const std::vector<Edge*>& edges = forward_ ? vertex.out : vertex.in;
    if (next_edge_ == edges.size()) {
      ++next_vertex_;
      next_edge_ = 0;
      return;
    }
    const Edge& edge = *edges[next_edge_++];
    Vertex& other = forward_ ? *edge.to : *edge.from;
    if (&other == &goal_) has_found_goal_ = true;
    if (forward_ ? IsBefore(other, goal_) : IsBefore(goal_, other)) Visit(other);
  }

 private:
  void Visit(Vertex& vertex) {
    std::uint64_t& visited = forward_ ? vertex.forward_search_ : vertex.backward_search_;
    if (visited == number_) return;
    found_.push_back(&vertex);
    visited = number_;
  }

  const Vertex& goal_;
  bool forward_;
  std::uint64_t number_;
  std::vector<Vertex*> found_;
  std::size_t next_vertex_ = 0;
  std::size_t next_edge_ = 0;
  bool has_found_goal_ = false;
};

AcyclicGraph::AcyclicGraph() {
  first_.after_ = &last_;
  last_.before_ = &first_;
  last_.label_ = kLastLabel;
}

void AcyclicGraph::Add(Vertex& vertex) { InsertAfter(vertex, *last_.before_); }

void AcyclicGraph::Remove(Vertex& vertex) { Unlink(vertex); }

bool AcyclicGraph::Connect(Edge& edge) {
  if (!IsBefore(*edge.from, *edge.to) && !MakeRoom(*edge.from, *edge.to)) return false;
  std::vector<Edge*>& out = edge.from->out;
  std::vector<Edge*>& in = edge.to->in;
  out.push_back(&edge);
  try {
    in.push_back(&edge);
  } catch (...) {
    out.pop_back();
    throw;
  }
  edge.place_in_from_ = out.size() - 1;
  edge.place_in_to_ = in.size() - 1;
  return true;
}

void AcyclicGraph::Disconnect(Edge& edge) {
  std::vector<Edge*>& out = edge.from->out;
  out[edge.place_in_from_] = out.back();
  out[edge.place_in_from_]->place_in_from_ = edge.place_in_from_;
  out.pop_back();
  std::vector<Edge*>& in = edge.to->in;
  in[edge.place_in_to_] = in.back();
  in[edge.place_in_to_]->place_in_to_ = edge.place_in_to_;
  in.pop_back();
}

/// Moves vertices so that `to`, which stands before `from` or is the same, comes after it. False where `from` can be
/// reached from `to`.
bool AcyclicGraph::MakeRoom(Vertex& from, Vertex& to) {
  if (&from == &to) return false;
  ++searches_;
  Search forward(to, from, true, searches_);
  Search backward(from, to, false, searches_);
  while (!forward.IsEnded() && !backward.IsEnded()) {
    steps_ += 2;
    forward.LookAtNextEdge();
    backward.LookAtNextEdge();
    if (forward.HasFoundGoal() || backward.HasFoundGoal()) return false;
  }
  if (forward.IsEnded()) {
    MoveAfter(forward.GetFound(), from);
  } else {
    MoveBefore(backward.GetFound(), to);
  }
  return true;
}

void AcyclicGraph::MoveAfter(std::vector<Vertex*>& moved, Vertex& place) {
  std::sort(moved.begin(), moved.end(), [](const Vertex* a, const Vertex* b) { return IsBefore(*a, *b); });
  Vertex* last = &place;
  for (Vertex* vertex : moved) {
    Unlink(*vertex);
    InsertAfter(*vertex, *last);
    last = vertex;
  }
  steps_ += moved.size();
}

void AcyclicGraph::MoveBefore(std::vector<Vertex*>& moved, Vertex& place) {
  std::sort(moved.begin(), moved.end(), [](const Vertex* a, const Vertex* b) { return IsBefore(*a, *b); });
  for (Vertex* vertex : moved) {
    Unlink(*vertex);
    InsertAfter(*vertex, *place.before_);
  }
  steps_ += moved.size();
}

void AcyclicGraph::Unlink(Vertex& vertex) {
  vertex.before_->after_ = vertex.after_;
  vertex.after_->before_ = vertex.before_;
}

void AcyclicGraph::InsertAfter(Vertex& vertex, Vertex& place) {
  if (place.after_->label_ - place.label_ < 2) Relabel(place);
  Vertex& next = *place.after_;
  const std::uint64_t gap = next.label_ - place.label_;
  const bool is_first = &place == &first_;
  const bool is_last = &next == &last_;
  std::uint64_t step = gap / 2;
  if (is_last && !is_first) step = std::min(step, kUsualGap);
  if (is_first && !is_last) step = gap - std::min(gap / 2, kUsualGap);
  vertex.label_ = place.label_ + step;
  vertex.before_ = &place;
  vertex.after_ = &next;
  place.after_ = &vertex;
  next.before_ = &vertex;
}

/// Spreads the labels of the smallest range around a vertex that is not too full. A range of twice the size may be less
/// full by a constant factor, which makes room for as many insertions as the spreading costs.
void AcyclicGraph::Relabel(Vertex& around) {
  constexpr double kGrowth = 1.4;
  double most = 1.0;
  for (std::uint64_t size = 2; size < kLastLabel; size *= 2) {
    most *= kGrowth;
    const std::uint64_t begin = around.label_ / size * size;
    const std::uint64_t end = begin + size;
    Vertex* first = &around;
    while (first->before_ != nullptr && first->before_->label_ >= begin) first = first->before_;
    std::size_t count = 0;
    for (const Vertex* vertex = first; vertex->after_ != nullptr && vertex->label_ < end; vertex = vertex->after_) {
      ++count;
    }
    steps_ += count;
    // Two places are left for each, so that there is room behind every one.
    if (static_cast<double>(count) > most || size / (count + 1) < 4) continue;
    const std::uint64_t gap = size / (count + 1);
    // The label before the first vertex stays where it is.
    if (first == &first_) {
      first = first->after_;
      --count;
    }
    std::uint64_t label = begin;
    for (std::size_t i = 0; i < count; ++i, first = first->after_) first->label_ = label += gap;
    return;
  }
}

}  // namespace ScEng

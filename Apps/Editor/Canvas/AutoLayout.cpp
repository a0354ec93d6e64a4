// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/AutoLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kColumnGap = 80.0;
constexpr double kRowGap = 34.0;
constexpr double kPartGap = 70.0;

using List = std::vector<std::size_t>;

/// Heights for blocks in a fixed order, each as near to where it wants to be as the blocks beside it allow: the least
/// sum of squared distances.
std::vector<double> Stack(const std::vector<double>& wanted, const std::vector<double>& extents) {
  struct Pool {
    double sum;
    std::size_t count;
    [[nodiscard]] double Mean() const { return sum / static_cast<double>(count); }
  };
  std::vector<Pool> pools;
  double offset = 0.0;
  std::vector<double> offsets;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    offsets.push_back(offset);
    pools.push_back({wanted[i] - offset, 1});
    offset += extents[i];
    while (pools.size() > 1 && pools[pools.size() - 2].Mean() > pools.back().Mean()) {
      pools[pools.size() - 2].sum += pools.back().sum;
      pools[pools.size() - 2].count += pools.back().count;
      pools.pop_back();
    }
  }
  std::vector<double> places;
  for (const Pool& pool : pools) {
    for (std::size_t i = 0; i < pool.count; ++i) places.push_back(pool.Mean() + offsets[places.size()]);
  }
  return places;
}

class Layout {
 public:
  Layout(const std::vector<QSizeF>& sizes, const std::vector<std::pair<std::size_t, std::size_t>>& edges)
      : nodes_(sizes.size()),
        sizes_(sizes),
        before_(sizes.size()),
        after_(sizes.size()),
        layer_(sizes.size(), 0),
        middle_(sizes.size(), 0.0),
        places_(sizes.size()) {
    for (const auto& [from, to] : edges) {
      if (from == to || from >= sizes.size() || to >= sizes.size()) continue;
      before_[to].push_back(from);
      after_[from].push_back(to);
    }
  }

  std::vector<QPointF> Make() {
    AssignLayers();
    AddLanes();
    double top = 0.0;
    List single;
    for (const List& part : ListParts()) {
      if (part.size() == 1) {
        single.push_back(part.front());
      } else {
        top = PlacePart(part, top) + kPartGap;
      }
    }
    PlaceSingle(single, top);
    places_.resize(nodes_);
    return places_;
  }

 private:
  void AssignLayers() {
    std::vector<std::size_t> open(sizes_.size());
    List order;
    for (std::size_t i = 0; i < sizes_.size(); ++i) {
      open[i] = before_[i].size();
      if (open[i] == 0) order.push_back(i);
    }
    for (std::size_t at = 0; at < order.size(); ++at) {
      for (const std::size_t next : after_[order[at]]) {
        layer_[next] = std::max(layer_[next], layer_[order[at]] + 1);
        if (--open[next] == 0) order.push_back(next);
      }
    }
    // What nothing feeds stands beside what it feeds first, not at the far left.
    for (auto node = order.rbegin(); node != order.rend(); ++node) {
      if (!before_[*node].empty() || after_[*node].empty()) continue;
      std::size_t nearest = layer_[after_[*node].front()];
      for (const std::size_t next : after_[*node]) nearest = std::min(nearest, layer_[next]);
      layer_[*node] = nearest == 0 ? 0 : nearest - 1;
    }
  }

  /// Wires over several layers get lanes between the nodes that they pass.
  void AddLanes() {
    // So many that large graphs with many long wires stay fast.
    const std::size_t most = 4 * nodes_ + 1000;
    for (std::size_t from = 0; from < nodes_; ++from) {
      const List targets = after_[from];
      after_[from].clear();
      for (const std::size_t to : targets) {
        if (layer_[to] <= layer_[from] + 1 || sizes_.size() >= most) {
          after_[from].push_back(to);
          continue;
        }
        before_[to].erase(std::find(before_[to].begin(), before_[to].end(), from));
        std::size_t end = from;
        for (std::size_t layer = layer_[from] + 1; layer < layer_[to]; ++layer) end = AddLane(end, layer);
        after_[end].push_back(to);
        before_[to].push_back(end);
      }
    }
  }

  std::size_t AddLane(std::size_t from, std::size_t layer) {
    const std::size_t lane = sizes_.size();
    sizes_.emplace_back(0.0, 1.0);
    before_.push_back({from});
    after_.emplace_back();
    layer_.push_back(layer);
    middle_.push_back(0.0);
    places_.emplace_back();
    after_[from].push_back(lane);
    return lane;
  }

  std::vector<List> ListParts() const {
    std::vector<List> parts;
    std::vector<bool> is_seen(sizes_.size());
    for (std::size_t start = 0; start < sizes_.size(); ++start) {
      if (is_seen[start]) continue;
      List& part = parts.emplace_back(List{start});
      is_seen[start] = true;
      for (std::size_t at = 0; at < part.size(); ++at) {
        for (const List* neighbors : {&before_[part[at]], &after_[part[at]]}) {
          for (const std::size_t next : *neighbors) {
            if (!is_seen[next]) part.push_back(next);
            is_seen[next] = true;
          }
        }
      }
      std::sort(part.begin(), part.end());
    }
    return parts;
  }

  [[nodiscard]] double Extent(std::size_t node) const { return sizes_[node].height() + kRowGap; }

  void Spread(const List& column, const std::vector<double>& wanted) {
    std::vector<double> extents;
    std::vector<double> tops;
    for (std::size_t i = 0; i < column.size(); ++i) {
      extents.push_back(Extent(column[i]));
      tops.push_back(wanted[i] - sizes_[column[i]].height() / 2);
    }
    const std::vector<double> stacked = Stack(tops, extents);
    for (std::size_t i = 0; i < column.size(); ++i) middle_[column[i]] = stacked[i] + sizes_[column[i]].height() / 2;
  }

  [[nodiscard]] double WantedMiddle(std::size_t node, const std::vector<List>& neighbors) const {
    if (neighbors[node].empty()) return middle_[node];
    std::vector<double> middles;
    for (const std::size_t other : neighbors[node]) middles.push_back(middle_[other]);
    std::sort(middles.begin(), middles.end());
    const std::size_t half = middles.size() / 2;
    return middles.size() % 2 == 1 ? middles[half] : (middles[half - 1] + middles[half]) / 2;
  }

  /// Orders a column by where its nodes want to be, and spreads it out there.
  void Settle(List& column, const std::vector<List>& neighbors, bool reorders) {
    std::vector<std::pair<double, std::size_t>> wanted;
    for (const std::size_t node : column) wanted.emplace_back(WantedMiddle(node, neighbors), node);
    if (reorders) {
      std::stable_sort(wanted.begin(), wanted.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    }
    std::vector<double> middles;
    for (std::size_t i = 0; i < column.size(); ++i) {
      column[i] = wanted[i].second;
      middles.push_back(wanted[i].first);
    }
    Spread(column, middles);
  }

  double PlacePart(const List& part, double top) {
    std::size_t layers = 0;
    for (const std::size_t node : part) layers = std::max(layers, layer_[node] + 1);
    std::vector<List> columns(layers);
    for (const std::size_t node : part) columns[layer_[node]].push_back(node);
    for (const List& column : columns) Spread(column, std::vector<double>(column.size(), 0.0));
    constexpr int kSweeps = 6;
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
      const bool reorders = sweep < kSweeps - 2;
      for (List& column : columns) Settle(column, before_, reorders);
      for (auto column = columns.rbegin(); column != columns.rend(); ++column) Settle(*column, after_, reorders);
    }
    return WritePlaces(columns, top);
  }

  /// What nothing connects stands in rows below the rest.
  void PlaceSingle(const List& nodes, double top) {
    const auto columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(nodes.size()) * 1.5)));
    double left = 0.0;
    double bottom = top;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      if (i > 0 && i % columns == 0) {
        left = 0.0;
        top = bottom + kRowGap;
      }
      places_[nodes[i]] = QPointF(std::round(left), std::round(top));
      left += sizes_[nodes[i]].width() + kColumnGap / 2;
      bottom = std::max(bottom, top + sizes_[nodes[i]].height());
    }
  }

  double WritePlaces(const std::vector<List>& columns, double top) {
    double highest = std::numeric_limits<double>::max();
    for (const List& column : columns) {
      for (const std::size_t node : column) highest = std::min(highest, middle_[node] - sizes_[node].height() / 2);
    }
    double left = 0.0;
    double bottom = top;
    for (const List& column : columns) {
      if (column.empty()) continue;
      double width = 0.0;
      for (const std::size_t node : column) width = std::max(width, sizes_[node].width());
      for (const std::size_t node : column) {
        const double y = top + middle_[node] - sizes_[node].height() / 2 - highest;
        places_[node] = QPointF(std::round(left + (width - sizes_[node].width()) / 2), std::round(y));
        bottom = std::max(bottom, y + sizes_[node].height());
      }
      left += width + kColumnGap;
    }
    return bottom;
  }

  /// How many nodes there are; what follows them are lanes.
  const std::size_t nodes_;
  std::vector<QSizeF> sizes_;
  std::vector<List> before_;
  std::vector<List> after_;
  List layer_;
  std::vector<double> middle_;
  std::vector<QPointF> places_;
};

}  // namespace

std::vector<QPointF> LayOutGraph(const std::vector<QSizeF>& sizes,
                                 const std::vector<std::pair<std::size_t, std::size_t>>& edges) {
  return Layout(sizes, edges).Make();
}

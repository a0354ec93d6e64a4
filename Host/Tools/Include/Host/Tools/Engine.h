// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Api.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Tools/NodeType.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/RefCounter.h"
#include "Host/Util/Status.h"

/// A graph of nodes and its evaluation.
///
/// The engine owns its nodes. It evaluates what is asked for in dependency order, each node once, without recursion,
/// and keeps results until something that they depend on changes. A node whose input failed is not evaluated. All use
/// of one engine, its nodes included, is on one thread at a time; separate engines are independent. Only the request to
/// stop an evaluation comes from wherever it likes.
///
/// Building a graph, evaluating and deleting it take time in proportion to its nodes and connections, but for a
/// logarithm, in whatever order they are listed, and no stack that grows with them.
///
/// No exception of a node reaches the caller: it becomes the node's error state, with the operation that threw.
class HOST_TOOLS_API Engine {
 public:
  /// The process's own engine, used by self-tests. Give it a catalogue before nodes are created.
  static Engine* Get();

  Engine();
  explicit Engine(std::shared_ptr<const ScEng::NodeCatalog> catalog);
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// The node types that can be created. Deletes the nodes of the catalogue before.
  void SetCatalog(std::shared_ptr<const ScEng::NodeCatalog> catalog);
  [[nodiscard]] const ScEng::NodeCatalog& GetCatalog() const;

  /// A new node, owned by the engine; null, with the reason, when the catalogue has no such type, or the library fails
  /// to make one.
  Node* CreateNode(const NodeType& type, ScEng::Status& status);
  /// The same without the reason.
  Node* CreateNode(const NodeType& type);
  /// Removes a node with its connections; false when it is not this engine's.
  bool DeleteNode(Node* node);
  /// All nodes, in no particular order.
  [[nodiscard]] std::vector<Node*> GetNodes() const;

  /// Connects an output plug to an input plug, a regular one or an attribute's. `from_index` is 0; `to_index` is the
  /// connection index at an input that takes many, else 0. Refused, with an error that says why: plugs that do not
  /// exist, plugs of different kinds, an input or index that is connected already, and a connection that would close a
  /// cycle.
  ScEng::Status Connect(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                        const std::string& to_plug, unsigned to_index);
  /// The same, answering whether the connection was made.
  bool ConnectNodes(Node* from, const std::string& from_plug, unsigned from_index, Node* to, const std::string& to_plug,
                    unsigned to_index);
  /// Removes exactly this connection; false when it does not exist.
  bool DisconnectNodes(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                       const std::string& to_plug, unsigned to_index);
  /// Whether anything is connected to this input plug.
  [[nodiscard]] bool IsConnected(const Node* node, const std::string& inplug) const;

  /// Something to evaluate: an output of a node, or a node as a whole where it has no outputs.
  struct Request {
    Node* node = nullptr;
    unsigned outplug = 0;
  };

  /// One evaluation of a node that came to its end, well or not.
  struct NodeTiming {
    std::chrono::steady_clock::time_point begin;
    std::chrono::steady_clock::time_point end;
    /// Bytes of the samples of its input images, each image once, and of its outputs.
    std::size_t bytes_read = 0;
    std::size_t bytes_made = 0;
  };

  struct Options {
    /// Tells nodes to drop their images as soon as nothing in this evaluation needs them any more, requested ones after
    /// `on_evaluated`. Nodes whose images nobody else needs then share a pass, so that only what is requested is made.
    bool release_results = false;
    /// Called after each node that was evaluated: `done` of `total`. Requested results can be read here.
    std::function<void(Node& node, std::size_t done, std::size_t total)> on_evaluated;
    /// Called while a node is evaluated that takes longer than some hundredths of a second, on the thread of
    /// `Evaluate`: the share of its work that is done, from 0 to 1, never less than before. Must not throw.
    std::function<void(Node& node, double fraction)> on_progress;
    /// Called with what the evaluation of a node has taken, before `on_evaluated`; not for nodes that were left out
    /// because of an error before them. With it no nodes share a pass. Nothing is counted where there is none.
    std::function<void(Node& node, const NodeTiming& timing)> on_timed;
    /// Stops the evaluation when it is requested, from whatever thread; null where nobody does.
    const ScEng::Cancellation* cancellation = nullptr;
  };

  enum class Outcome {
    /// Everything that was asked for has been evaluated, or left out because of an error.
    kComplete,
    /// The evaluation was stopped. The node that was being evaluated has no results, like those that were to follow;
    /// what was up to date before or is complete stays so. The next evaluation makes what is missing.
    kCanceled,
  };

  /// Evaluates what the requests need and what is not up to date. How each node fared is in its state; an exception
  /// that leaves a node becomes that node's error state.
  Outcome Evaluate(const std::vector<Request>& requests, const Options& options);
  Outcome Evaluate(const std::vector<Request>& requests) { return Evaluate(requests, Options{}); }

  /// Puts an image in place of a node's output, or takes it away again (null). As long as it stands there, whoever
  /// is connected to the output receives it; the node is not evaluated for this output, nor what it depends on, and no
  /// error of the node concerns them. What depends on the output is evaluated anew. Refused, with false, for what is no
  /// image output of a node of this engine.
  ///
  /// The engine takes a reference to the image, whose samples must not change while it stands there.
  bool SetOutputOverride(Node* node, unsigned outplug, const ImagePtr& image);

  /// The image of an output, without a further reference: the one in its place, else the node's own; null where there
  /// is none.
  [[nodiscard]] Image* GetOutputImage(Node* node, unsigned outplug) const;

  /// What evaluating a node has taken.
  struct NodeStatistics {
    /// Wall time of its last evaluation that was not cancelled.
    double seconds = 0.0;
    /// How often it was evaluated to the end.
    std::size_t evaluations = 0;
    /// Bytes of the samples that its outputs held after that, and hold now.
    std::size_t bytes_made = 0;
    std::size_t bytes_held = 0;
  };
  /// All zero for a node that is not of this engine.
  [[nodiscard]] NodeStatistics GetStatistics(Node* node) const;

  /// Whether the node was left out of the last evaluation because a node that it depends on failed.
  [[nodiscard]] bool IsBlocked(const Node* node) const;

 private:
  class Graph;
  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::unique_ptr<Graph> graph_;
};

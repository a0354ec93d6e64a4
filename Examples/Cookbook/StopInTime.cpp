// SPDX-License-Identifier: Apache-2.0
//
// Evaluates a node that takes long, shows how far it is and stops it when its time is over.

#include <Host/Nodes/HostNodes.h>
#include <Host/Tools/Engine.h>
#include <Host/Tools/NodeLibrary.h>
#include <Host/Util/Cancellation.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace {

int Fail(const std::string& message) {
  std::fprintf(stderr, "stop-in-time: %s\n", message.c_str());
  return 1;
}

/// Requests a stop when the time is over, from a thread of its own; not once it is destroyed.
class Deadline {
 public:
  Deadline(ScEng::Cancellation& cancellation, double seconds)
      : thread_([this, &cancellation, seconds] {
          std::unique_lock lock(mutex_);
          const bool is_done = ended_.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return done_; });
          if (!is_done) cancellation.Request();
        }) {}
  ~Deadline() {
    {
      const std::lock_guard lock(mutex_);
      done_ = true;
    }
    ended_.notify_one();
    thread_.join();
  }
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;

 private:
  std::mutex mutex_;
  std::condition_variable ended_;
  bool done_ = false;
  std::thread thread_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return Fail("usage: stop-in-time LIBRARY SECONDS");
  ScEng::Status status;
  std::shared_ptr<ScEng::NodeLibrary> library = ScEng::NodeLibrary::Load(argv[1], status);
  if (!library) return Fail(status.GetMessage());
  const std::shared_ptr<ScEng::NodeCatalog> catalog = ScEng::CreateHostCatalog();
  status = catalog->AddLibrary(std::move(library));
  if (status.IsError()) return Fail(status.GetMessage());

  // A relief of a large radius on a large terrain takes many seconds.
  Engine engine(catalog);
  Node* terrain = engine.CreateNode(ScEng::kImageTerrainType);
  Node* relief = engine.CreateNode(catalog->FindTypeName("ImageReliefNode")->GetNodeType());
  terrain->GetAttribute("frame")->SetFrame(0, 0, 4096, 4096, false);
  relief->GetAttribute("radius")->SetNumber(200, false);
  status = engine.Connect(terrain, "image", 0, relief, "image", 0);
  if (status.IsError()) return Fail(status.GetMessage());

  ScEng::Cancellation cancellation;
  Engine::Options options;
  options.cancellation = &cancellation;
  double reached = 0.0;
  options.on_progress = [&](Node&, double fraction) { reached = fraction; };
  const Deadline deadline(cancellation, std::atof(argv[2]));
  const Engine::Outcome outcome = engine.Evaluate({{relief, 0}}, options);
  if (outcome == Engine::Outcome::kComplete) {
    std::printf("done in time\n");
    return 0;
  }
  // Nothing half-made stays: the next evaluation makes what is missing.
  std::printf("stopped %s, and there is %s\n", reached < 1.0 ? "on the way" : "at the end",
              relief->GetOutputImage(0) == nullptr ? "no result" : "a result");
  return 0;
}

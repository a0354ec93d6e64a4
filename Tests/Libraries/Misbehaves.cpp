// SPDX-License-Identifier: Apache-2.0
// A node library that does to its process what no library may: Misbehavior.cpp names what, and in which of its parts.

#include <err.h>
#include <fcntl.h>
#include <unistd.h>

#include <cfenv>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <thread>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif
#include <sys/stat.h>

#include "Tests/Libraries/ImageParts.h"

extern const char* const misbehavior_place;
extern const char* const misbehavior_deed;

namespace {

void FlushToZero() {
#if defined(__SSE2__)
  _mm_setcsr(_mm_getcsr() | 0x8040U);
#else
  std::fesetround(FE_UPWARD);
#endif
}

void Crash() { *static_cast<volatile int*>(nullptr) = 1; }

/// Deeper than any stack.
int UseUpStack(int depth) {
  volatile char kept[4096];
  kept[0] = static_cast<char>(depth);
  return depth > 1000000000 ? 0 : UseUpStack(depth + 1) + kept[0];
}

void Hang() {
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

void ChangeLocale() {
  // This one is always there.
  std::setlocale(LC_ALL, "C.UTF-8");
}

void StartThread() {
  static const bool is_started = [] {
    std::thread(Hang).detach();
    return true;
  }();
  static_cast<void>(is_started);
}

struct Deed {
  std::string_view name;
  void (*act)();
};

// Each is a function without arguments, so that one table has all.
constexpr Deed kDeeds[] = {
    {"exit", [] { std::exit(0); }},
    {"_exit", [] { _exit(0); }},
    {"_Exit", [] { std::_Exit(0); }},
    {"quick_exit", [] { std::quick_exit(0); }},
    {"errx", [] { errx(0, "no shelf"); }},
    {"abort", [] { std::abort(); }},
    {"crash", Crash},
    {"overflow", [] { UseUpStack(0); }},
    {"hang", Hang},
    {"print", [] { std::printf("the shelf is bare\n"); }},
    {"round", [] { std::fesetround(FE_UPWARD); }},
    {"flush to zero", FlushToZero},
    {"trap", [] { feenableexcept(FE_DIVBYZERO); }},
    {"close", [] { close(STDERR_FILENO); }},
    {"close all", [] { closefrom(0); }},
    {"chdir", [] { static_cast<void>(!chdir("/")); }},
    {"signal", [] { std::signal(SIGINT, SIG_IGN); }},
    {"locale", ChangeLocale},
    {"umask", [] { umask(0); }},
    {"start a thread", StartThread},
    {"throw", [] { throw std::runtime_error("the shelf is bare"); }},
};

void Arrive(std::string_view place) {
  if (place != misbehavior_place) return;
  for (const Deed& deed : kDeeds) {
    if (deed.name == misbehavior_deed) deed.act();
  }
}

struct StaticObject {
  StaticObject() { Arrive("constructor"); }
  ~StaticObject() { Arrive("destructor"); }
} static_object;

class Observer : public NodeObserver {
 public:
  void OnNodeChanged(Node&) override { Arrive("OnNodeChanged"); }
  void OnAttributeSourcesChanged(Node&) override { Arrive("OnAttributeSourcesChanged"); }
};

class BadNode : public ImagePartsNode {
 public:
  BadNode() {
    AddObserver(&observer_);
    Arrive("CreateNode");
  }
  ~BadNode() override {
    RemoveObserver(&observer_);
    Arrive("~Node");
  }
  void OnAdded() override { Arrive("OnAdded"); }
  [[nodiscard]] bool IsSink() const override {
    Arrive("IsSink");
    return false;
  }
  [[nodiscard]] std::string GetInplugAlias(unsigned inplug) const override {
    Arrive("GetInplugAlias");
    return ImagePartsNode::GetInplugAlias(inplug);
  }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    Arrive("Evaluate");
    ImagePartsNode::Evaluate(evaluation, inputs);
  }

 private:
  Observer observer_;
};

}  // namespace

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() {
  Arrive("GetLibraryInterface");
  return MakeLibraryObject();
}
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 1; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  Arrive("GetNodeInterface");
  return index == 0 ? new ImagePartsDescriptor<BadNode> : nullptr;
}

// SPDX-License-Identifier: Apache-2.0
#include "Bench/CancelTrial.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "Bench/ProgramSupport.h"
#include "Host/Files/ImageFile.h"

namespace Bench {
namespace {

using Clock = std::chrono::steady_clock;

/// No node is waited for longer: it is then stopped somewhere in its first seconds.
constexpr double kLongest = 4.0;
/// Nothing stops later than this, or something is broken.
constexpr double kPatience = 120.0;

constexpr const char* kTested = "tested";
constexpr const char* kSmall = "small.image";

double SecondsSince(Clock::time_point begun) { return std::chrono::duration<double>(Clock::now() - begun).count(); }

NodeType FindType(const ScEng::NodeCatalog& catalog, const std::string& name) {
  const NodeInterface* descriptor = catalog.FindTypeName(name);
  if (descriptor == nullptr) throw std::runtime_error("there is no node type " + name);
  return descriptor->GetNodeType();
}

std::string MakeFrame(int side) { return "0,0," + std::to_string(side) + "," + std::to_string(side); }

/// The first image output, as "id.plug"; empty where there is none.
std::string FindImageOutput(const Node& node, const std::string& id) {
  for (const PlugRecord& plug : node.GetOutplugs()) {
    if (plug.type == PlugType::kImage) return id + "." + plug.name;
  }
  return {};
}

std::string Milliseconds(double seconds) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(seconds < 0.01 ? 1 : 0) << seconds * 1e3 << " ms";
  return text.str();
}

}  // namespace

CancelTrial::CancelTrial(const std::shared_ptr<const ScEng::NodeCatalog>& catalog, int side)
    : folder_(std::filesystem::temp_directory_path() / ("cancel-times-" + std::to_string(getpid()))), side_(side) {
  std::filesystem::create_directories(folder_);
  session_ = std::make_unique<ScEng::EditSession>(catalog, folder_);
  Check(session_->AddNode({FindType(*catalog, "ImageTerrainNode"), "terrain", {}}));
  Check(session_->SetAttribute("terrain.frame", MakeFrame(side)));
  Check(session_->AddNode({FindType(*catalog, "ImageRectangleNode"), "small", {}}));
  Check(session_->SetAttribute("small.frame", MakeFrame(8)));
  WriteFiles();
  evaluator_ = std::make_unique<ScEng::BackgroundEvaluator>(*session_, [this] {
    {
      const std::lock_guard lock(mutex_);
      is_told_ = true;
    }
    told_.notify_all();
  });
  evaluator_->SetEvaluatesAll(false);
  evaluator_->SetThumbnailSize(96);
  evaluator_->Show({"terrain.image", false});
  if (!WaitFor("terrain.image", kPatience)) throw std::runtime_error("the terrain took too long");
  ShowSmall();
}

CancelTrial::~CancelTrial() {
  evaluator_.reset();
  session_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void CancelTrial::WriteFiles() {
  ScEng::RunReport report;
  const ImagePtr image = session_->GetDocument().Evaluate("terrain.image", report);
  if (!image) throw std::runtime_error("there is no terrain");
  for (const char* name : {"terrain.exr", "terrain.png", "terrain.tif"}) {
    std::vector<std::string> notes;
    Check(ScEng::WriteImageFile(*image, folder_ / name, {}, notes));
  }
}

void CancelTrial::SetIfThere(const std::string& id, const std::string& attribute, const std::string& text) {
  if (session_->GetDocument().FindNode(id)->GetAttribute(attribute) == nullptr) return;
  Check(session_->SetAttribute(id + "." + attribute, text));
}

void CancelTrial::AddTested(const CancelCase& tested) {
  Check(session_->AddNode({FindType(*session_->GetCatalog(), tested.type), kTested, {}}));
  SetIfThere(kTested, "frame", MakeFrame(side_));
  for (const auto& [attribute, text] : tested.attributes) {
    const std::string whole = attribute == "path" ? (folder_ / text).string() : text;
    Check(session_->SetAttribute(std::string(kTested) + "." + attribute, whole));
  }
  const Node& node = *session_->GetDocument().FindNode(kTested);
  std::vector<std::string> inputs;
  for (std::size_t i = 0; i < node.GetNumRegularInputs(); ++i) {
    if (node.GetInplugs()[i].type == PlugType::kImage) inputs.push_back(node.GetInplugs()[i].name);
  }
  for (const std::string& input : inputs) {
    Check(session_->Connect({"terrain.image", std::string(kTested) + "." + input, 0}));
  }
}

bool CancelTrial::WaitFor(const std::string& plug, double seconds) {
  const auto until = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  std::unique_lock lock(mutex_);
  while (told_.wait_until(lock, until, [this] { return is_told_; })) {
    is_told_ = false;
    lock.unlock();
    const auto result = evaluator_->TakeResult();
    if (result && result->shown.plug == plug) {
      message_ = result->message;
      return true;
    }
    lock.lock();
  }
  return false;
}

void CancelTrial::ShowSmall() {
  evaluator_->Show({kSmall, false});
  if (!evaluator_->WaitUntilIdle(kPatience)) throw std::runtime_error("the evaluator does not stop");
  static_cast<void>(evaluator_->TakeResult());
}

double CancelTrial::MeasureWhole(const std::string& plug, std::string& message) {
  const auto begun = Clock::now();
  evaluator_->Show({plug, false});
  const bool is_done = WaitFor(plug, kLongest);
  const double whole = is_done ? SecondsSince(begun) : kLongest;
  message = is_done ? message_ : std::string();
  ShowSmall();
  return whole;
}

bool CancelTrial::Stop(const std::string& plug, double after, Times& times) {
  evaluator_->ReadAgain({kTested});
  if (!evaluator_->WaitUntilIdle(kPatience)) throw std::runtime_error("the evaluator does not stop");
  static_cast<void>(evaluator_->TakeResult());
  evaluator_->Show({plug, false});
  std::this_thread::sleep_for(std::chrono::duration<double>(after));
  const bool is_working = !evaluator_->IsIdle();
  const double used = GetProcessorSeconds();
  const auto requested = Clock::now();
  evaluator_->Show({kSmall, false});
  if (!WaitFor(kSmall, kPatience)) throw std::runtime_error("the evaluator does not stop");
  times = {SecondsSince(requested), GetProcessorSeconds() - used};
  ShowSmall();
  return is_working;
}

std::string CancelTrial::MakeRow(const CancelCase& tested, double whole, int attempts, std::vector<Times> stopped) {
  std::ostringstream row;
  row << "| " << tested.name << " | ";
  if (whole >= kLongest) {
    row << "over " << kLongest << " s";
  } else {
    row << Milliseconds(whole);
  }
  row << " | " << stopped.size() << " of " << attempts << " | ";
  if (stopped.empty()) {
    row << "- | - | - |";
    return row.str();
  }
  std::ranges::sort(stopped, {}, &Times::processor_seconds);
  const double processor_seconds = stopped.back().processor_seconds;
  std::ranges::sort(stopped, {}, &Times::seconds);
  row << Milliseconds(stopped[stopped.size() / 2].seconds) << " | " << Milliseconds(stopped.back().seconds) << " | "
      << Milliseconds(processor_seconds) << " |";
  return row.str();
}

std::string CancelTrial::Run(const CancelCase& tested, int attempts) {
  AddTested(tested);
  const std::string plug = FindImageOutput(*session_->GetDocument().FindNode(kTested), kTested);
  std::string row;
  if (!plug.empty()) {
    std::string message;
    // The second time: a device compiles its program before the first, and files are then in memory.
    MeasureWhole(plug, message);
    evaluator_->ReadAgain({kTested});
    const double whole = MeasureWhole(plug, message);
    std::uniform_real_distribution<double> instants(0.0, whole);
    std::vector<Times> stopped;
    for (int i = 0; i < attempts; ++i) {
      Times times;
      if (Stop(plug, instants(random_), times)) stopped.push_back(times);
    }
    row = MakeRow(tested, whole, attempts, std::move(stopped)) + (message.empty() ? "" : " " + message) + "\n";
  }
  Check(session_->RemoveNodes({kTested}));
  return row;
}

}  // namespace Bench

// SPDX-License-Identifier: Apache-2.0
#include "Host/Testing/TestContext.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Host/Image/DisplayImage.h"
#include "Host/Testing/TestSession.h"
#include "Host/Tools/Engine.h"

namespace {

using Clock = std::chrono::steady_clock;
using ScEng::Status;
using ScEng::TestCaseReport;
using ScEng::TestSession;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

/// Points relative paths to read that the working directory does not have at the session's own inputs.
void FindInputs(const Engine& engine, const std::filesystem::path& inputs) {
  if (inputs.empty()) return;
  for (const Node* node : engine.GetNodes()) {
    for (std::size_t id = 0; id < node->GetNumAttributes(); ++id) {
      Attribute* attribute = node->GetAttribute(id);
      if (attribute->GetKind() != Attribute::Kind::kString) continue;
      if (attribute->GetStringUse() != Attribute::StringUse::kReadPath) continue;
      const std::filesystem::path file = ScEng::MakePath(attribute->GetValue().GetText());
      std::error_code error;
      const bool is_ours = file.is_relative() && !std::filesystem::exists(file, error) &&
                           std::filesystem::is_regular_file(inputs / file, error);
      attribute->SetFolder(is_ours ? inputs : std::filesystem::path());
    }
  }
}

/// What one rendering needs to be judged.
struct Tolerances {
  double mean = 0.0;
  double largest = 0.0;
};

/// A node's error in the words of its state; empty where it has no error.
std::string DescribeError(const Node& node, const Engine& engine) {
  if (node.IsInError()) return node.GetStateMessage().empty() ? "the node is in error" : node.GetStateMessage();
  if (!engine.IsBlocked(&node)) return {};
  for (const Node* other : engine.GetNodes()) {
    if (other->IsInError()) return other->GetName() + ": " + other->GetStateMessage();
  }
  return "a node that it depends on failed";
}

bool HasFileError(const Node& node, const Engine& engine) {
  if (node.GetState() == Node::State::kFileError) return true;
  if (!engine.IsBlocked(&node)) return false;
  const std::vector<Node*> nodes = engine.GetNodes();
  return std::any_of(nodes.begin(), nodes.end(),
                     [](const Node* other) { return other->GetState() == Node::State::kFileError; });
}

/// Evaluates an output of a node of the process's engine. Null, with the reason in the report, where it has none.
const Image* Evaluate(Node& node, unsigned outplug, TestCaseReport& report) {
  Engine& engine = *Engine::Get();
  FindInputs(engine, TestSession::Get().GetOptions().inputs);
  const Clock::time_point start = Clock::now();
  engine.Evaluate({{&node, outplug}});
  report.seconds = SecondsSince(start);
  report.problem = DescribeError(node, engine);
  report.is_file_problem = HasFileError(node, engine);
  if (!report.problem.empty()) return nullptr;
  const Image* image = node.GetOutputImage(outplug);
  if (image == nullptr) report.problem = "the node has no output";
  return image;
}

/// Writes the image and its picture.
void Write(const Image& image, TestCaseReport& report) {
  std::error_code error;
  std::filesystem::create_directories(report.file.parent_path(), error);
  std::vector<std::string> notes;
  Status status;
  if (error) {
    status =
        Status::Error("the folder \"" + report.file.parent_path().string() + "\" cannot be made: " + error.message());
  } else {
    status = ScEng::WriteImageFile(image, report.file, {.type = ScEng::SampleType::kFloat}, notes);
  }
  if (!status.IsError()) {
    const ImagePtr picture = ScEng::MakeDisplayImage(image, image.GetValueLow(), image.GetValueHigh());
    status = ScEng::WriteImageFile(*picture, std::filesystem::path(report.file).replace_extension(".png"),
                                   {.type = ScEng::SampleType::kUint8}, notes);
  }
  if (!status.IsError()) return;
  report.problem = status.GetMessage();
  report.is_file_problem = true;
}

std::string FormatNumber(double number, std::chars_format format, int precision) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof(text), number, format, precision).ptr;
  return {text, end};
}

/// A difference with three digits.
std::string FormatDifference(double difference) { return FormatNumber(difference, std::chars_format::general, 3); }

/// Reads an image file; null, with the reason in the report, where it cannot be read.
ImagePtr Read(const std::filesystem::path& file, TestCaseReport& report) {
  std::vector<std::string> notes;
  Status status;
  auto image = ScEng::ReadImageFile(file, {}, status, notes);
  if (!image) {
    report.problem = status.GetMessage();
    report.is_file_problem = true;
  }
  return image;
}

/// Holds the written file against the reference. Both went through the same format, which keeps the colour of a fully
/// transparent pixel no better in one than in the other.
void Compare(const Image& expected, const Tolerances& tolerances, TestCaseReport& report) {
  const ImagePtr written = Read(report.file, report);
  if (!written) return;
  report.difference = ScEng::CompareImages(*written, expected);
  if (!report.difference->same_shape) {
    report.problem = "its size or mode is not that of the reference";
  } else if (!(report.difference->mean <= tolerances.mean && report.difference->largest <= tolerances.largest)) {
    report.problem = "it differs from the reference by " + FormatDifference(report.difference->mean) +
                     " on average and by " + FormatDifference(report.difference->largest) + " at most";
  }
}

void Print(const TestCaseReport& report) {
  std::string line = report.name + ": " + FormatNumber(report.seconds * 1e3, std::chars_format::fixed, 2) + " ms, ";
  if (!report.passed) {
    line += "failed: " + report.problem;
  } else if (report.difference) {
    line += "passed, at most " + FormatDifference(report.difference->largest) + " from the reference";
  } else if (!TestSession::Get().GetOptions().reference.empty()) {
    line += "passed, without a reference";
  } else {
    line += "passed";
  }
  std::cout << line << std::endl;
}

}  // namespace

TestContext::TestContext(std::string directory_name, std::string title_line)
    : directory(std::move(directory_name)), title(std::move(title_line)) {}

void TestContext::InitializeTest() const {
  std::cout << title << std::endl;
  TestSession::Get().BeginTest(title, directory);
  // A directory that cannot be made shows when the first image is written to it.
  std::error_code error;
  std::filesystem::create_directories(directory, error);
}

void TestContext::InitTimer() { start_ = Clock::now(); }

double TestContext::GetSeconds() const { return SecondsSince(start_); }

bool TestContext::DoTest(Node* node, unsigned outplug, unsigned rendering) {
  TestCaseReport report;
  report.name = case_name + (rendering == 0 ? "" : "-" + std::to_string(rendering));
  report.file = std::filesystem::path(directory) / (report.name + ".exr");
  // The reference is read before anything is written: it may be what the last run left in the same place.
  const std::filesystem::path reference = TestSession::Get().FindReference(directory, report.name);
  TestCaseReport reading;
  const ImagePtr expected = reference.empty() ? nullptr : Read(reference, reading);
  const Image* image = node != nullptr ? Evaluate(*node, outplug, report) : nullptr;
  if (node == nullptr) report.problem = "there is no node";
  if (image != nullptr) Write(*image, report);
  if (report.problem.empty() && expected) Compare(*expected, {mean_tolerance, largest_tolerance}, report);
  if (report.problem.empty() && !reading.problem.empty()) {
    report.problem = reading.problem;
    report.is_file_problem = true;
  }
  report.passed = report.problem.empty();
  Print(report);
  const bool passed = report.passed;
  TestSession::Get().AddCase(std::move(report));
  return passed;
}

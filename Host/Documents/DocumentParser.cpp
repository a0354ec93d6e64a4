// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentParser.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "Host/Documents/MessageText.h"

namespace ScEng {
namespace {

// With long doubles a number that no double holds is an event like any other and does not end parsing.
using Json = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t, std::uint64_t, long double>;

constexpr std::pair<const char*, DocumentList> kLists[] = {{"nodes", DocumentList::kNodes},
                                                           {"connections", DocumentList::kConnections},
                                                           {"outputs", DocumentList::kOutputs},
                                                           {"frames", DocumentList::kFrames}};

std::optional<DocumentList> FindList(std::string_view key) {
  for (const auto& [name, list] : kLists) {
    if (key == name) return list;
  }
  return std::nullopt;
}

/// The library's message without its leading "[json.exception...]".
std::string DescribeJsonError(const Json::exception& error) {
  const std::string_view text = error.what();
  const std::size_t end = text.find("] ");
  const bool has_lead = text.starts_with('[') && end != std::string_view::npos;
  // The message quotes what was read last, which may be all of the document.
  constexpr std::size_t kLongest = 1000;
  return std::string(text.substr(has_lead ? end + 2 : 0, kLongest));
}

/// Receives the library's events and puts the entries together.
class EventHandler {
 public:
  explicit EventHandler(DocumentEvents& events) : events_(events) {}

  [[nodiscard]] ParseProblem GetProblem() const { return {problem_, is_syntax_}; }

  // ---- What the library calls ----

  // NOLINTBEGIN(readability-identifier-naming): the names are the library's.
  bool null() { return TakeScalar(JsonValue()); }
  bool boolean(bool flag) { return TakeScalar(JsonValue(flag)); }
  bool number_integer(std::int64_t number) { return TakeScalar(JsonValue(static_cast<double>(number))); }
  bool number_unsigned(std::uint64_t number) { return TakeScalar(JsonValue(static_cast<double>(number))); }
  bool number_float(long double number, const std::string& text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
      if (std::abs(number) > 1.0L) Fault(Quote(text) + " is a number that no double holds");
      value = std::copysign(0.0, number < 0.0L ? -1.0 : 1.0);
    }
    return TakeScalar(JsonValue(value));
  }
  bool string(std::string& text) { return TakeScalar(JsonValue(std::move(text))); }
  static bool binary(Json::binary_t&) { return false; }
  bool start_object(std::size_t) { return Start(JsonValue(JsonValue::Object())); }
  bool start_array(std::size_t) { return Start(JsonValue(JsonValue::Array())); }
  bool end_object() { return End(); }
  bool end_array() { return End(); }
  bool key(std::string& name) {
    if (levels_ == 1) {
      StartDocumentKey(name);
    } else if (!open_.empty()) {
      StartKey(open_.back(), std::move(name));
    }
    return problem_.empty();
  }
  bool parse_error(std::size_t, const std::string&, const Json::exception& error) {
    problem_ = DescribeJsonError(error);
    is_syntax_ = true;
    return false;
  }
  // NOLINTEND(readability-identifier-naming)

 private:
  /// What becomes of the value of the document's key that is read now.
  enum class Use { kNothing, kWhole, kList };

  /// An object or array that is not complete yet.
  struct Open {
    JsonValue value;
    std::string key;
    // Filled only where there are many.
    std::set<std::string, std::less<>> keys;
    bool is_repeated = false;
  };

  void StartDocumentKey(const std::string& name) {
    key_ = name;
    index_ = 0;
    list_ = FindList(name);
    use_ = list_ ? Use::kList : Use::kWhole;
    num_values_ = 0;
    if (document_keys_.size() < kMostValues && !document_keys_.insert(name).second) {
      use_ = Use::kNothing;
      events_.OnFault("the key " + Quote(name) + " is there twice in one object");
      if (list_) events_.OnLostList(*list_);
    }
  }

  void StartKey(Open& open, std::string name) {
    open.key = std::move(name);
    JsonValue::Object& members = *open.value.GetObject();
    constexpr std::size_t kFew = 16;
    if (members.size() < kFew) {
      open.is_repeated = open.value.Find(open.key) != nullptr;
    } else {
      if (open.keys.empty()) {
        for (const JsonMember& member : members) open.keys.insert(member.key);
      }
      open.is_repeated = !open.keys.insert(open.key).second;
    }
    if (open.is_repeated) Fault("the key " + Quote(open.key) + " is there twice in one object");
  }

  bool TakeScalar(JsonValue value) {
    if (levels_ == 0) {
      events_.OnFault("the document is not an object");
    } else if (levels_ == 1 && use_ == Use::kList) {
      RefuseList();
    } else if (IsOneNodeTooMany()) {
      return false;
    } else if (use_ != Use::kNothing && CountValue()) {
      Attach(std::move(value));
    }
    return problem_.empty();
  }

  bool Start(JsonValue value) {
    if (++levels_ > kMostLevels) {
      problem_ = "it is nested deeper than " + std::to_string(kMostLevels) + " levels";
      return false;
    }
    if (levels_ == 1) {
      if (value.GetObject() != nullptr) {
        events_.OnObject();
      } else {
        events_.OnFault("the document is not an object");
      }
      return true;
    }
    if (IsListStart(value)) {
      events_.OnList(*list_);
      return true;
    }
    if (levels_ == 2 && use_ == Use::kList) RefuseList();
    if (use_ == Use::kNothing) return true;
    if (IsOneNodeTooMany()) return false;
    if (CountValue()) {
      open_.push_back({std::move(value), {}, {}, false});
    } else {
      ++levels_left_out_;
    }
    return true;
  }

  bool End() {
    --levels_;
    if (levels_ == 0 || use_ == Use::kNothing || (levels_ == 1 && use_ == Use::kList)) return true;
    if (levels_left_out_ > 0) {
      --levels_left_out_;
      return true;
    }
    JsonValue value = std::move(open_.back().value);
    open_.pop_back();
    Attach(std::move(value));
    return problem_.empty();
  }

  [[nodiscard]] bool IsListStart(const JsonValue& value) const {
    return levels_ == 2 && use_ == Use::kList && value.GetArray() != nullptr;
  }

  bool IsOneNodeTooMany() {
    if (!open_.empty() || use_ != Use::kList || list_ != DocumentList::kNodes || index_ < kMostNodes) return false;
    problem_ = "it has more than " + std::to_string(kMostNodes) + " nodes";
    return true;
  }

  void RefuseList() {
    events_.OnFault(Quote(key_) + " is not a list");
    events_.OnLostList(*list_);
    use_ = Use::kNothing;
  }

  /// Counts a value of an entry; false when it is one too many and to be left out.
  bool CountValue() {
    if (++num_values_ <= kMostValues) return true;
    if (num_values_ == kMostValues + 1) Fault("it holds more than " + std::to_string(kMostValues) + " values");
    return false;
  }

  void Attach(JsonValue value) {
    if (open_.empty()) {
      Deliver(std::move(value));
      return;
    }
    Open& parent = open_.back();
    if (JsonValue::Array* array = parent.value.GetArray()) {
      array->push_back(std::move(value));
    } else if (!parent.is_repeated) {
      parent.value.Add(parent.key, std::move(value));
    }
  }

  void Deliver(JsonValue value) {
    if (use_ == Use::kWhole) {
      events_.OnValue(key_, value);
      return;
    }
    const bool is_whole = num_values_ <= kMostValues;
    if (is_whole) events_.OnEntry(*list_, index_, std::move(value));
    ++index_;
    num_values_ = 0;
  }

  void Fault(const std::string& text) {
    std::string place = list_ ? DescribePlace(*list_, index_) : Quote(key_);
    if (!open_.empty() && !open_.back().key.empty()) place += ", " + Quote(open_.back().key);
    events_.OnFault(place + ": " + text);
  }

  DocumentEvents& events_;
  std::string problem_;
  bool is_syntax_ = false;
  std::size_t levels_ = 0;
  std::set<std::string> document_keys_;
  std::string key_;
  Use use_ = Use::kNothing;
  std::optional<DocumentList> list_;
  std::size_t index_ = 0;
  std::size_t num_values_ = 0;
  std::size_t levels_left_out_ = 0;
  std::vector<Open> open_;
};

}  // namespace

std::string DescribePlace(DocumentList list, std::size_t index) {
  for (const auto& [name, named] : kLists) {
    if (named == list) return std::string(name) + "[" + std::to_string(index) + "]";
  }
  return {};
}

ParseProblem ParseDocument(std::string_view text, DocumentEvents& events) {
  // The parser takes a zero byte for the end of the text.
  if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos) {
    return {"byte " + std::to_string(zero) + " is a zero byte, which JSON does not have", false};
  }
  EventHandler handler(events);
  try {
    Json::sax_parse(text.begin(), text.end(), &handler);
  } catch (const Json::exception& error) {
    return {DescribeJsonError(error), false};
  }
  return handler.GetProblem();
}

}  // namespace ScEng

// SPDX-License-Identifier: Apache-2.0
#pragma once

/// What the validating process and its child say to each other: one JSON object per line.
///
/// The process asks {"check": "leaks", "index": 3, "count": 20}. The child answers with any number of objects that tell
/// something ("at", "count", "library", "label", "fault") and then one with "done", which holds the lists "failures"
/// and "skips"; or, asked for "load", with "refused" and the loader's reason.
namespace ScEng::Protocol {

inline constexpr const char* kCheck = "check";
/// In the place of a check: the whole examination, after which the child ends.
inline constexpr const char* kExamine = "examine";
inline constexpr const char* kIndex = "index";
inline constexpr const char* kCount = "count";
inline constexpr const char* kAt = "at";
inline constexpr const char* kLibrary = "library";
inline constexpr const char* kLabel = "label";
inline constexpr const char* kFault = "fault";
inline constexpr const char* kDone = "done";
inline constexpr const char* kFailures = "failures";
inline constexpr const char* kSkips = "skips";
inline constexpr const char* kRefused = "refused";

}  // namespace ScEng::Protocol

// SPDX-License-Identifier: Apache-2.0
// What Misbehaves.cpp does, and where: small, so that many libraries are built in little time.

extern const char* const misbehavior_place;
extern const char* const misbehavior_deed;
const char* const misbehavior_place = VALUE_PLACE;
const char* const misbehavior_deed = VALUE_DEED;

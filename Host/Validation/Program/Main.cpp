// SPDX-License-Identifier: Apache-2.0
//
// value-examiner <library> <channel>
#include <cstdio>

#include "Host/Validation/Validation.h"

int main(int count, char** words) {
  if (count == 3) ScEng::RunValidationChild(words[1], words[2]);
  std::fputs("value-examiner loads a node library for a program that examines it, which starts it by itself\n", stderr);
  return 2;
}

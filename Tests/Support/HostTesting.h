// SPDX-License-Identifier: Apache-2.0
#pragma once

/// What the tests of the host's libraries share.
#include "Tests/Support/Folders.h"
#include "Tests/Support/ImageTesting.h"
#include "Tests/Support/Numbers.h"
#include "Tests/Support/Text.h"
#include "Tests/Support/Threads.h"

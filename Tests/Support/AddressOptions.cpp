// SPDX-License-Identifier: Apache-2.0

/// Options that the address sanitizer starts each test program with; those of the environment come on top.
///
/// Without `intercept_tls_get_addr` the run-time library of GCC 12 follows the variables that a thread has in libraries
/// loaded later. It takes such a block for one with the header of an old C library where its address happens to end
/// like one, reads the block's size out of what lies before it, and crashes when it looks for leaks there. The blocks
/// are found through the C library's own table anyway.
extern "C" const char* __asan_default_options();  // NOLINT(bugprone-reserved-identifier): the sanitizer's name
extern "C" const char* __asan_default_options() { return "intercept_tls_get_addr=0"; }

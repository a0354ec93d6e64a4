// SPDX-License-Identifier: Apache-2.0
//
// Empty: the target of this file exists for the headers that it compiles beforehand.

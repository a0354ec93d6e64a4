// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The self-tests that descriptors run.
///
/// Each builds a small graph on the host's engine and has a fixed list of cases rendered, whose images the host stores
/// under the test's directory and judges. The answer is whether every case passed. A test whose nodes cannot be created
/// says so on standard output, renders nothing and answers false. Nodes stay in the engine; the host clears it.
namespace SelfTests {

/// Of Value Steps: waves and their absolute value, by a node type that no catalogue has.
bool RunAbsolute();
/// Of Value Add and Value Subtract.
bool RunAdd();
/// Of Value Multiply, Value Divide and Value Power.
bool RunMultiply();
/// Of Value Minimum.
bool RunMinimum();
/// Of Value Maximum.
bool RunMaximum();
/// Of Value Condition: a checker under each of the conditions.
bool RunCondition();
/// Of Relief: the inner bevel test, then the levels test, whatever the first one answered.
bool RunRelief();

}  // namespace SelfTests

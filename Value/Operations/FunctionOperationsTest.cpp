// SPDX-License-Identifier: Apache-2.0
//
// The expected numbers are those of mathematical tables, rounded once to the nearest float by the compiler.
#include "Value/Operations/FunctionOperations.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cstdint>
#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;
using Testing::kSmallest;

constexpr float kPi = 3.14159265358979324F;
constexpr float kHalfPi = 1.57079632679489662F;

struct Expectation {
  float value;
  float result;
};

template <class Operation>
void ExpectResults(const std::vector<Expectation>& expectations) {
  Operation operation;
  EXPECT_SAME(operation.min, 0.0F);
  EXPECT_SAME(operation.max, 1.0F);
  for (const auto& [value, result] : expectations) {
    SCOPED_TRACE(value);
    EXPECT_SAME(operation.Compute(value), result);
    // The second value plays no part.
    for (const float second : {0.5F, -1.0F, kNan}) EXPECT_SAME(operation.Compute(value, second), result);
  }
}

TEST(SineValueOperation, GivesTheSineOfRadians) {
  ExpectResults<SineValueOperation>({{0.5F, 0.479425538604203000F},
                                     {1.0F, 0.841470984807896507F},
                                     {-1.0F, -0.841470984807896507F},
                                     {2.0F, 0.909297426825681695F},
                                     {100.0F, -0.506365641109758794F},
                                     {0.0F, 0.0F},
                                     {-0.0F, -0.0F},
                                     // The float nearest pi lies 8.74e-8 above it.
                                     {kPi, -8.74227800037248514e-8F},
                                     {kInfinity, kNan},
                                     {-kInfinity, kNan},
                                     {kNan, kNan}});
}

TEST(CosineValueOperation, GivesTheCosineOfRadians) {
  ExpectResults<CosineValueOperation>({{0.5F, 0.877582561890372716F},
                                       {-0.5F, 0.877582561890372716F},
                                       {1.0F, 0.540302305868139717F},
                                       {2.0F, -0.416146836547142387F},
                                       {100.0F, 0.862318872287683934F},
                                       {0.0F, 1.0F},
                                       {-0.0F, 1.0F},
                                       {kPi, -1.0F},
                                       {kInfinity, kNan},
                                       {-kInfinity, kNan},
                                       {kNan, kNan}});
}

TEST(TangentValueOperation, GivesTheTangentOfRadians) {
  ExpectResults<TangentValueOperation>({{0.5F, 0.546302489843790513F},
                                        {1.0F, 1.55740772465490223F},
                                        {-1.0F, -1.55740772465490223F},
                                        {2.0F, -2.18503986326151899F},
                                        {0.0F, 0.0F},
                                        {-0.0F, -0.0F},
                                        {kInfinity, kNan},
                                        {-kInfinity, kNan},
                                        {kNan, kNan}});
}

TEST(ArcSineValueOperation, GivesTheArcSineInsideItsDomain) {
  ExpectResults<ArcSineValueOperation>({{0.5F, 0.523598775598298873F},
                                        {-0.5F, -0.523598775598298873F},
                                        {0.25F, 0.252680255142078653F},
                                        {0.0F, 0.0F},
                                        {-0.0F, -0.0F}});
}

TEST(ArcSineValueOperation, StopsAtTheEdgesOfItsDomain) {
  ExpectResults<ArcSineValueOperation>({{1.0F, kHalfPi},
                                        {1.5F, kHalfPi},
                                        {kInfinity, kHalfPi},
                                        {-1.0F, -kHalfPi},
                                        {-1.5F, -kHalfPi},
                                        {-kInfinity, -kHalfPi},
                                        {kNan, -kHalfPi}});
}

TEST(ArcCosineValueOperation, GivesTheArcCosineInsideItsDomain) {
  ExpectResults<ArcCosineValueOperation>({{0.5F, 1.04719755119659775F},
                                          {-0.5F, 2.09439510239319549F},
                                          {0.25F, 1.31811607165281797F},
                                          {0.0F, kHalfPi},
                                          {-0.0F, kHalfPi}});
}

TEST(ArcCosineValueOperation, StopsAtTheEdgesOfItsDomain) {
  ExpectResults<ArcCosineValueOperation>(
      {{1.0F, 0.0F}, {1.5F, 0.0F}, {kInfinity, 0.0F}, {-1.0F, kPi}, {-2.0F, kPi}, {-kInfinity, kPi}, {kNan, kPi}});
}

TEST(ArcTangentValueOperation, GivesTheArcTangent) {
  ExpectResults<ArcTangentValueOperation>({{1.0F, 0.785398163397448310F},
                                           {-1.0F, -0.785398163397448310F},
                                           {0.5F, 0.463647609000806116F},
                                           {2.0F, 1.10714871779409050F},
                                           {0.0F, 0.0F},
                                           {-0.0F, -0.0F},
                                           {kInfinity, kHalfPi},
                                           {-kInfinity, -kHalfPi},
                                           {kNan, kNan}});
}

TEST(FloorValueOperation, GivesTheLargestWholeNumberNotAbove) {
  ExpectResults<FloorValueOperation>({{1.75F, 1.0F},
                                      {2.0F, 2.0F},
                                      {-1.25F, -2.0F},
                                      {-0.25F, -1.0F},
                                      {0.99999994F, 0.0F},
                                      {0.0F, 0.0F},
                                      {-0.0F, -0.0F},
                                      {-kSmallest, -1.0F},
                                      {8388607.5F, 8388607.0F},
                                      {3.0e10F, 3.0e10F},
                                      {kInfinity, kInfinity},
                                      {-kInfinity, -kInfinity},
                                      {kNan, kNan}});
}

TEST(CeilValueOperation, GivesTheSmallestWholeNumberNotBelow) {
  ExpectResults<CeilValueOperation>({{1.25F, 2.0F},
                                     {2.0F, 2.0F},
                                     {-1.75F, -1.0F},
                                     {-0.25F, -0.0F},
                                     {kSmallest, 1.0F},
                                     {0.0F, 0.0F},
                                     {-0.0F, -0.0F},
                                     {8388607.5F, 8388608.0F},
                                     {kInfinity, kInfinity},
                                     {-kInfinity, -kInfinity},
                                     {kNan, kNan}});
}

TEST(AbsoluteValueOperation, ClearsTheSign) {
  ExpectResults<AbsoluteValueOperation>({{-0.25F, 0.25F},
                                         {0.25F, 0.25F},
                                         {-0.0F, 0.0F},
                                         {0.0F, 0.0F},
                                         {-kSmallest, kSmallest},
                                         {-kLargest, kLargest},
                                         {-kInfinity, kInfinity},
                                         {kNan, kNan}});
  EXPECT_FALSE(std::signbit(AbsoluteValueOperation().Compute(-kNan)));
}

TEST(InverseValueOperation, GivesTheReciprocalWithoutAGuard) {
  ExpectResults<InverseValueOperation>({{4.0F, 0.25F},
                                        {-0.5F, -2.0F},
                                        {3.0F, 0.333333333333333333F},
                                        {0.0F, kInfinity},
                                        {-0.0F, -kInfinity},
                                        {kSmallest, kInfinity},
                                        {kInfinity, 0.0F},
                                        {-kInfinity, -0.0F},
                                        {kNan, kNan}});
}

TEST(LogValueOperation, GivesTheNaturalLogarithm) {
  ExpectResults<LogValueOperation>({{1.0F, 0.0F},
                                    {2.0F, 0.693147180559945309F},
                                    {10.0F, 2.30258509299404568F},
                                    {0.5F, -0.693147180559945309F},
                                    {0.0F, -kInfinity},
                                    {-0.0F, -kInfinity},
                                    {-1.0F, kNan},
                                    {-kInfinity, kNan},
                                    {kInfinity, kInfinity},
                                    {kNan, kNan}});
}

TEST(Log2ValueOperation, ScalesTheRoundedNaturalLogarithm) {
  ExpectResults<Log2ValueOperation>({{1.0F, 0.0F},
                                     {2.0F, 1.0F},
                                     {1024.0F, 10.0F},
                                     {0.5F, -1.0F},
                                     // The logarithms of 12 and 13 themselves are 3.58496250 and 3.70043972, whose
                                     // nearest floats are one step higher: the product rounds twice.
                                     {12.0F, 3.5849623680114746F},
                                     {13.0F, 3.700439453125F},
                                     {0.0F, -kInfinity},
                                     {-1.0F, kNan},
                                     {kInfinity, kInfinity},
                                     {kNan, kNan}});
}

TEST(Log10ValueOperation, ScalesTheRoundedNaturalLogarithm) {
  ExpectResults<Log10ValueOperation>({{1.0F, 0.0F},
                                      {10.0F, 1.0F},
                                      {1000.0F, 3.0F},
                                      {0.1F, -1.0F},
                                      // Here it lands above the float nearest the logarithm itself, 1.07918119.
                                      {12.0F, 1.0791813135147095F},
                                      {21.0F, 1.3222193717956543F},
                                      {0.0F, -kInfinity},
                                      {-1.0F, kNan},
                                      {kInfinity, kInfinity},
                                      {kNan, kNan}});
}

TEST(ExponentialValueOperation, GivesThePowerOfE) {
  ExpectResults<ExponentialValueOperation>({{0.0F, 1.0F},
                                            {-0.0F, 1.0F},
                                            {1.0F, 2.71828182845904524F},
                                            {-1.0F, 0.367879441171442322F},
                                            {10.0F, 22026.4657948067165F},
                                            {89.0F, kInfinity},
                                            {-104.0F, 0.0F},
                                            {kInfinity, kInfinity},
                                            {-kInfinity, 0.0F},
                                            {kNan, kNan}});
}

TEST(SquareRootValueOperation, GivesTheSquareRootAndNanBelowZero) {
  ExpectResults<SquareRootValueOperation>({{4.0F, 2.0F},
                                           {2.0F, 1.41421356237309505F},
                                           {0.25F, 0.5F},
                                           {0.0F, 0.0F},
                                           {-0.0F, -0.0F},
                                           {-4.0F, kNan},
                                           {-kSmallest, kNan},
                                           {kInfinity, kInfinity},
                                           {-kInfinity, kNan},
                                           {kNan, kNan}});
}

TEST(CubicRootValueOperation, IsDefinedForNegativeNumbers) {
  ExpectResults<CubicRootValueOperation>({{-8.0F, -2.0F},
                                          {8.0F, 2.0F},
                                          {0.125F, 0.5F},
                                          {1000.0F, 10.0F},
                                          {0.0F, 0.0F},
                                          {-0.0F, -0.0F},
                                          {kInfinity, kInfinity},
                                          {-kInfinity, -kInfinity},
                                          {kNan, kNan}});
}

TEST(CubicRootValueOperation, IsTheNearestFloat) {
  // The root of 229 is 6.11803317…; the floats beside it are 6.11803293… and 6.11803340…, which is nearer.
  ExpectResults<CubicRootValueOperation>({{229.0F, 6.1180334F}, {-229.0F, -6.1180334F}});
}

TEST(DegToRadValueOperation, TurnsDegreesIntoRadians) {
  ExpectResults<DegToRadValueOperation>({{180.0F, kPi},
                                         {-90.0F, -kHalfPi},
                                         {1.0F, 0.0174532925199432958F},
                                         {0.0F, 0.0F},
                                         {-0.0F, -0.0F},
                                         {kInfinity, kInfinity},
                                         {kNan, kNan}});
}

TEST(RadToDegValueOperation, TurnsRadiansIntoDegrees) {
  ExpectResults<RadToDegValueOperation>({{kPi, 180.0F},
                                         {1.0F, 57.2957795130823209F},
                                         {-2.0F, -114.591559026164642F},
                                         {-0.0F, -0.0F},
                                         {3.0e38F, kInfinity},
                                         {-kInfinity, -kInfinity},
                                         {kNan, kNan}});
}

float AnyFloat() { return std::bit_cast<float>(*rc::gen::arbitrary<std::uint32_t>()); }

RC_GTEST_PROP(FunctionProperties, ClampedInversesStayInTheirRangeForEveryBitPattern, ()) {
  const float v = AnyFloat();
  const float sine = ArcSineValueOperation().Compute(v);
  const float cosine = ArcCosineValueOperation().Compute(v);
  RC_ASSERT(sine >= -kHalfPi && sine <= kHalfPi);
  RC_ASSERT(cosine >= 0.0F && cosine <= kPi);
}

RC_GTEST_PROP(FunctionProperties, AbsoluteClearsTheSignBitOnly, ()) {
  const auto bits = *rc::gen::arbitrary<std::uint32_t>();
  const float v = std::bit_cast<float>(bits);
  RC_ASSERT(Testing::AreSame(AbsoluteValueOperation().Compute(v), std::bit_cast<float>(bits & 0x7FFFFFFFU)));
}

RC_GTEST_PROP(FunctionProperties, FloorAndCeilEncloseTheValue, ()) {
  const float v = AnyFloat();
  RC_PRE(std::isfinite(v));
  const float below = FloorValueOperation().Compute(v);
  const float above = CeilValueOperation().Compute(v);
  RC_ASSERT(below <= v && v <= above);
  // Beyond 2 to the 23 every float is a whole number.
  if (std::fabs(v) < 8388608.0F) RC_ASSERT(above - below == (below == v ? 0.0F : 1.0F));
  if (std::fabs(v) >= 8388608.0F) RC_ASSERT(below == v && above == v);
}

}  // namespace

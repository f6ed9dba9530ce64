// LinAlg: vector and matrix operations on plain float arrays. Every sum runs
// in index order in single precision, each product and each sum rounded to
// float on its own, so most results here are compared to the last bit.
//
// Two tricks recur to make the order of summation observable:
// - 1e8f is exactly representable and the spacing of floats around it is 8,
//   so 1e8f + 1.0f rounds back to 1e8f: a 1 added next to 1e8 is lost, a 1
//   added after the cancellation survives.
// - 4097 * 4097 = 16785409 is odd and above 2^24, where floats are 2 apart;
//   the product rounds (ties to even) to 16785408. A product added to a sum
//   without being rounded first (a fused multiply-add) would keep the 1.

#include "qvimanager/cmetry/linalg.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

using CMetry::LinAlg;

namespace {

constexpr float kSentinel = 12345.0f;
constexpr long kLongSentinel = -77;

// Reference for the weighted least-squares tests: solves the normal
// equations sum_i w_i^2 a_i a_i^T x = sum_i w_i^2 a_i y_i in double
// precision, by Gaussian elimination with partial pivoting on a copy. Up to
// three unknowns.
std::array<double, 3> WeightedNormalEquationsReference(const float* w, const float* y, const float* a, long m, long n)
{
    double ata[3][4] = {};
    for (long j = 0; j < n; ++j) {
        for (long k = 0; k < n; ++k) {
            double sum = 0.0;
            for (long i = 0; i < m; ++i) {
                const double wi = w[i];
                sum += wi * wi * static_cast<double>(a[i * n + j]) * static_cast<double>(a[i * n + k]);
            }
            ata[j][k] = sum;
        }
        double sum = 0.0;
        for (long i = 0; i < m; ++i) {
            const double wi = w[i];
            sum += wi * wi * static_cast<double>(a[i * n + j]) * static_cast<double>(y[i]);
        }
        ata[j][n] = sum;
    }
    for (long k = 0; k < n; ++k) {
        long pivot = k;
        for (long i = k + 1; i < n; ++i) {
            if (std::fabs(ata[i][k]) > std::fabs(ata[pivot][k])) {
                pivot = i;
            }
        }
        for (long j = 0; j <= n; ++j) {
            const double t = ata[k][j];
            ata[k][j] = ata[pivot][j];
            ata[pivot][j] = t;
        }
        for (long i = k + 1; i < n; ++i) {
            const double factor = ata[i][k] / ata[k][k];
            for (long j = k; j <= n; ++j) {
                ata[i][j] -= factor * ata[k][j];
            }
        }
    }
    std::array<double, 3> x = {0.0, 0.0, 0.0};
    for (long i = n - 1; i >= 0; --i) {
        double t = ata[i][n];
        for (long j = i + 1; j < n; ++j) {
            t -= ata[i][j] * x[static_cast<std::size_t>(j)];
        }
        x[static_cast<std::size_t>(i)] = t / ata[i][i];
    }
    return x;
}

} // namespace

// ---------------------------------------------------------------------------
// Element-wise vector operations

TEST(LinAlgVAddKxV, AddsTheScaledVectorToTheFirst)
{
    std::array<float, 4> v = {1.0f, 2.0f, 3.0f, kSentinel};
    const std::array<float, 4> w = {2.0f, 4.0f, -6.0f, 100.0f};
    LinAlg::VAddKxV(v.data(), 0.5f, w.data(), 3);
    EXPECT_EQ(2.0f, v[0]);
    EXPECT_EQ(4.0f, v[1]);
    EXPECT_EQ(0.0f, v[2]);
    EXPECT_EQ(kSentinel, v[3]); // only n elements are touched
    EXPECT_EQ(100.0f, w[3]);
}

TEST(LinAlgVAddKxV, TheProductIsRoundedToFloatBeforeTheAddition)
{
    // 4097 * 4097 rounds to 16785408 before it is added to -16785408: the sum
    // is 0. A fused multiply-add would keep the exact product and give 1.
    std::array<float, 1> v = {-16785408.0f};
    const std::array<float, 1> w = {4097.0f};
    LinAlg::VAddKxV(v.data(), 4097.0f, w.data(), 1);
    EXPECT_EQ(0.0f, v[0]);
}

TEST(LinAlgInitV, SetsTheFirstNElementsToTheValue)
{
    std::array<float, 4> v = {1.0f, 2.0f, 3.0f, kSentinel};
    LinAlg::InitV(v.data(), -2.5f, 3);
    EXPECT_EQ(-2.5f, v[0]);
    EXPECT_EQ(-2.5f, v[1]);
    EXPECT_EQ(-2.5f, v[2]);
    EXPECT_EQ(kSentinel, v[3]);
}

TEST(LinAlgVAddV, IntoAThirdVectorAddsElementByElement)
{
    const std::array<float, 3> a = {1.0f, -2.0f, 0.25f};
    const std::array<float, 3> b = {10.0f, 20.0f, 0.5f};
    std::array<float, 4> out = {kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::VAddV(out.data(), a.data(), b.data(), 3);
    EXPECT_EQ(11.0f, out[0]);
    EXPECT_EQ(18.0f, out[1]);
    EXPECT_EQ(0.75f, out[2]);
    EXPECT_EQ(kSentinel, out[3]);
    EXPECT_EQ(1.0f, a[0]); // inputs stay as they were
    EXPECT_EQ(10.0f, b[0]);
}

TEST(LinAlgVAddV, InPlaceAddsToTheFirstVector)
{
    std::array<float, 4> v = {1.0f, -2.0f, 0.25f, kSentinel};
    const std::array<float, 4> a = {10.0f, 20.0f, 0.5f, 1.0f};
    LinAlg::VAddV(v.data(), a.data(), 3);
    EXPECT_EQ(11.0f, v[0]);
    EXPECT_EQ(18.0f, v[1]);
    EXPECT_EQ(0.75f, v[2]);
    EXPECT_EQ(kSentinel, v[3]);
}

TEST(LinAlgVAddV, RoundsEachSumToFloat)
{
    // 1e8 + 1 is not a float: it rounds back to 1e8.
    const std::array<float, 1> a = {1e8f};
    const std::array<float, 1> b = {1.0f};
    std::array<float, 1> out = {0.0f};
    LinAlg::VAddV(out.data(), a.data(), b.data(), 1);
    EXPECT_EQ(1e8f, out[0]);
}

TEST(LinAlgVSubV, IntoAThirdVectorSubtractsTheSecondFromTheFirst)
{
    const std::array<float, 3> a = {1.0f, -2.0f, 0.25f};
    const std::array<float, 3> b = {10.0f, 20.0f, 0.5f};
    std::array<float, 4> out = {kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::VSubV(out.data(), a.data(), b.data(), 3);
    EXPECT_EQ(-9.0f, out[0]);
    EXPECT_EQ(-22.0f, out[1]);
    EXPECT_EQ(-0.25f, out[2]);
    EXPECT_EQ(kSentinel, out[3]);
}

TEST(LinAlgVSubV, InPlaceSubtractsFromTheFirstVector)
{
    std::array<float, 4> v = {1.0f, -2.0f, 0.25f, kSentinel};
    const std::array<float, 4> a = {10.0f, 20.0f, 0.5f, 1.0f};
    LinAlg::VSubV(v.data(), a.data(), 3);
    EXPECT_EQ(-9.0f, v[0]);
    EXPECT_EQ(-22.0f, v[1]);
    EXPECT_EQ(-0.25f, v[2]);
    EXPECT_EQ(kSentinel, v[3]);
}

// ---------------------------------------------------------------------------
// Sums and products

TEST(LinAlgSumV, SumsExactValues)
{
    const std::array<float, 4> a = {1.5f, -2.0f, 4.25f, 100.0f};
    EXPECT_EQ(3.75f, LinAlg::SumV(a.data(), 3));
    EXPECT_EQ(0.0f, LinAlg::SumV(a.data(), 0));
}

TEST(LinAlgSumV, SumsInIndexOrderInFloat)
{
    // In index order: 1e8 + 1 rounds back to 1e8, minus 1e8 gives 0, plus 1
    // gives 1. An exact (or double) sum would give 2; the reverse order gives
    // 0 (-1e8 absorbs the first 1); adding the ones first gives 2.
    const std::array<float, 4> a = {1e8f, 1.0f, -1e8f, 1.0f};
    EXPECT_EQ(1.0f, LinAlg::SumV(a.data(), 4));

    const std::array<float, 4> reversed = {1.0f, -1e8f, 1.0f, 1e8f};
    EXPECT_EQ(0.0f, LinAlg::SumV(reversed.data(), 4));
}

TEST(LinAlgSumV, MatchesAnExplicitFloatAccumulation)
{
    const std::array<float, 5> a = {0.1f, 0.2f, 0.3f, 1e-3f, 7.7f};
    float expected = 0.0f;
    for (float value : a) {
        expected += value;
    }
    EXPECT_EQ(expected, LinAlg::SumV(a.data(), 5));
}

TEST(LinAlgBetragV, IsTheEuclideanLength)
{
    const std::array<float, 2> a = {3.0f, 4.0f};
    EXPECT_EQ(5.0f, LinAlg::BetragV(a.data(), 2));
    const std::array<float, 2> b = {1.0f, 1.0f};
    EXPECT_EQ(static_cast<float>(std::sqrt(2.0)), LinAlg::BetragV(b.data(), 2));
    const std::array<float, 3> c = {-2.0f, 0.0f, 0.0f};
    EXPECT_EQ(2.0f, LinAlg::BetragV(c.data(), 3));
    EXPECT_EQ(0.0f, LinAlg::BetragV(c.data(), 0));
}

TEST(LinAlgBetragV, TheSumOfSquaresIsAccumulatedInFloat)
{
    // 4096^2 = 2^24, where floats are 2 apart: each following 1 is a tie that
    // rounds back to 2^24, so the float sum stays 2^24 and the length is
    // exactly 4096. Summed in double the eight ones would count and the
    // length would be 4096 + 8/8192, two float steps above 4096.
    const std::array<float, 9> a = {4096.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f};
    EXPECT_EQ(4096.0f, LinAlg::BetragV(a.data(), 9));
}

TEST(LinAlgBetragV, MatchesAnExplicitFloatSumWithADoubleSquareRoot)
{
    const std::array<float, 3> a = {0.1f, 0.7f, 1.3f};
    float sum = 0.0f;
    sum += a[0] * a[0];
    sum += a[1] * a[1];
    sum += a[2] * a[2];
    const float expected = static_cast<float>(std::sqrt(static_cast<double>(sum)));
    EXPECT_EQ(expected, LinAlg::BetragV(a.data(), 3));
}

TEST(LinAlgDotProd, SumsTheProducts)
{
    const std::array<float, 4> a = {1.0f, 2.0f, 3.0f, 1000.0f};
    const std::array<float, 4> b = {4.0f, -5.0f, 0.5f, 1000.0f};
    EXPECT_EQ(-4.5f, LinAlg::DotProd(a.data(), b.data(), 3));
    EXPECT_EQ(0.0f, LinAlg::DotProd(a.data(), b.data(), 0));
}

TEST(LinAlgDotProd, SumsTheProductsInIndexOrderInFloat)
{
    // The products are 1e8, 1, -1e8, 1, all exact. In index order 1e8 + 1
    // rounds back to 1e8, the cancellation gives 0 and the last 1 survives:
    // the result is 1, where an exact or double sum would give 2.
    const std::array<float, 4> a = {1e4f, 1.0f, -1e4f, 1.0f};
    const std::array<float, 4> b = {1e4f, 1.0f, 1e4f, 1.0f};
    EXPECT_EQ(1.0f, LinAlg::DotProd(a.data(), b.data(), 4));
}

TEST(LinAlgDotProd, EachProductIsRoundedToFloatBeforeItIsAdded)
{
    // 1 * -16785408 is exact; 4097 * 4097 rounds to 16785408, so the sum is 0.
    // Keeping the exact product (fused multiply-add) would give 1.
    const std::array<float, 2> a = {1.0f, 4097.0f};
    const std::array<float, 2> b = {-16785408.0f, 4097.0f};
    EXPECT_EQ(0.0f, LinAlg::DotProd(a.data(), b.data(), 2));
}

TEST(LinAlgDotProd, MatchesAnExplicitFloatAccumulation)
{
    const std::array<float, 4> a = {0.1f, -0.3f, 2.7f, 1e-2f};
    const std::array<float, 4> b = {3.3f, 0.7f, 0.11f, 9.9f};
    float expected = 0.0f;
    expected += a[0] * b[0];
    expected += a[1] * b[1];
    expected += a[2] * b[2];
    expected += a[3] * b[3];
    EXPECT_EQ(expected, LinAlg::DotProd(a.data(), b.data(), 4));
}

// ---------------------------------------------------------------------------
// Scaling and element products

TEST(LinAlgKxM, IntoAnotherMatrixScalesRTimesCElements)
{
    const std::array<float, 7> m = {1.0f, -2.0f, 3.0f, 4.0f, 0.5f, -0.25f, 9.0f};
    std::array<float, 7> out = {kSentinel, kSentinel, kSentinel, kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::KxM(out.data(), -2.0f, m.data(), 2, 3);
    const std::array<float, 6> expected = {-2.0f, 4.0f, -6.0f, -8.0f, -1.0f, 0.5f};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i], out[i]) << "element " << i;
    }
    EXPECT_EQ(kSentinel, out[6]);
    EXPECT_EQ(1.0f, m[0]);
}

TEST(LinAlgKxM, InPlaceScalesRTimesCElements)
{
    std::array<float, 7> m = {1.0f, -2.0f, 3.0f, 4.0f, 0.5f, -0.25f, kSentinel};
    LinAlg::KxM(m.data(), 4.0f, 3, 2);
    const std::array<float, 6> expected = {4.0f, -8.0f, 12.0f, 16.0f, 2.0f, -1.0f};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i], m[i]) << "element " << i;
    }
    EXPECT_EQ(kSentinel, m[6]);
}

TEST(LinAlgKxV, IntoAnotherVectorScalesEachElement)
{
    const std::array<float, 4> a = {1.0f, -2.0f, 0.1f, 7.0f};
    std::array<float, 4> out = {kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::KxV(out.data(), 3.0f, a.data(), 3);
    EXPECT_EQ(3.0f, out[0]);
    EXPECT_EQ(-6.0f, out[1]);
    EXPECT_EQ(3.0f * 0.1f, out[2]);
    EXPECT_EQ(kSentinel, out[3]);
    EXPECT_EQ(-2.0f, a[1]);
}

TEST(LinAlgKxV, InPlaceScalesEachElement)
{
    std::array<float, 4> v = {1.0f, -2.0f, 0.1f, kSentinel};
    LinAlg::KxV(v.data(), -0.5f, 3);
    EXPECT_EQ(-0.5f, v[0]);
    EXPECT_EQ(1.0f, v[1]);
    EXPECT_EQ(-0.5f * 0.1f, v[2]);
    EXPECT_EQ(kSentinel, v[3]);
}

TEST(LinAlgKVAddKV, AddsTwoScaledVectors)
{
    const std::array<float, 3> a = {1.0f, 2.0f, 3.0f};
    const std::array<float, 3> b = {4.0f, -1.0f, 0.5f};
    std::array<float, 4> out = {kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::KVAddKV(out.data(), 2.0f, a.data(), -3.0f, b.data(), 3);
    EXPECT_EQ(-10.0f, out[0]);
    EXPECT_EQ(7.0f, out[1]);
    EXPECT_EQ(4.5f, out[2]);
    EXPECT_EQ(kSentinel, out[3]);
}

TEST(LinAlgKVAddKV, BothProductsAreRoundedToFloatBeforeTheAddition)
{
    // 4097 * 4097 rounds to 16785408; plus 1 * -16785408 gives 0. Fusing
    // either product into the addition would give 1.
    const std::array<float, 1> a = {4097.0f};
    const std::array<float, 1> b = {-16785408.0f};
    std::array<float, 1> out = {kSentinel};
    LinAlg::KVAddKV(out.data(), 4097.0f, a.data(), 1.0f, b.data(), 1);
    EXPECT_EQ(0.0f, out[0]);
}

TEST(LinAlgVxV, IntoAThirdVectorMultipliesElementByElement)
{
    const std::array<float, 3> a = {1.0f, -2.0f, 0.5f};
    const std::array<float, 3> b = {3.0f, 4.0f, -8.0f};
    std::array<float, 4> out = {kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::VxV(out.data(), a.data(), b.data(), 3);
    EXPECT_EQ(3.0f, out[0]);
    EXPECT_EQ(-8.0f, out[1]);
    EXPECT_EQ(-4.0f, out[2]);
    EXPECT_EQ(kSentinel, out[3]);
}

TEST(LinAlgVxV, InPlaceMultipliesElementByElement)
{
    std::array<float, 4> v = {1.0f, -2.0f, 0.5f, kSentinel};
    const std::array<float, 4> a = {3.0f, 4.0f, -8.0f, 2.0f};
    LinAlg::VxV(v.data(), a.data(), 3);
    EXPECT_EQ(3.0f, v[0]);
    EXPECT_EQ(-8.0f, v[1]);
    EXPECT_EQ(-4.0f, v[2]);
    EXPECT_EQ(kSentinel, v[3]);
}

TEST(LinAlgVdivV, DividesElementByElement)
{
    const std::array<float, 3> a = {6.0f, -1.0f, 1.0f};
    const std::array<float, 3> b = {3.0f, 4.0f, 3.0f};
    std::array<float, 4> out = {kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::VdivV(out.data(), a.data(), b.data(), 3);
    EXPECT_EQ(2.0f, out[0]);
    EXPECT_EQ(-0.25f, out[1]);
    EXPECT_EQ(1.0f / 3.0f, out[2]);
    EXPECT_EQ(kSentinel, out[3]);
}

TEST(LinAlgVdivV, AZeroDivisorGivesAnInfinityOrANaNWithoutTrapping)
{
    // The division is unguarded: x / 0 is a signed infinity and 0 / 0 a NaN.
    // Reaching the checks at all shows that nothing trapped.
    const std::array<float, 5> a = {1.0f, -1.0f, 0.0f, 1.0f, 6.0f};
    const std::array<float, 5> b = {0.0f, 0.0f, 0.0f, -0.0f, 3.0f};
    std::array<float, 5> out = {kSentinel, kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::VdivV(out.data(), a.data(), b.data(), 5);
    EXPECT_EQ(std::numeric_limits<float>::infinity(), out[0]);
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), out[1]);
    EXPECT_TRUE(std::isnan(out[2]));
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), out[3]);
    EXPECT_EQ(2.0f, out[4]); // the elements after a zero divisor are still computed
}

// ---------------------------------------------------------------------------
// Matrix operations

TEST(LinAlgMxV, WithAStrideWiderThanCUsesASubBlockOfAWiderMatrix)
{
    // A 3 by 5 matrix; the 2 by 3 block starting at row 0, column 1 is used.
    const std::array<float, 15> wide = {
        100.0f, 1.0f, 2.0f,  3.0f, 200.0f, //
        300.0f, 4.0f, -5.0f, 6.0f, 400.0f, //
        500.0f, 7.0f, 8.0f,  9.0f, 600.0f, //
    };
    const std::array<float, 3> v = {1.0f, 2.0f, -1.0f};
    std::array<float, 3> out = {kSentinel, kSentinel, kSentinel};
    LinAlg::MxV(out.data(), wide.data() + 1, v.data(), 2, 3, 5);
    EXPECT_EQ(1.0f * 1.0f + 2.0f * 2.0f + 3.0f * -1.0f, out[0]); // 2
    EXPECT_EQ(4.0f * 1.0f + -5.0f * 2.0f + 6.0f * -1.0f, out[1]); // -12
    EXPECT_EQ(2.0f, out[0]);
    EXPECT_EQ(-12.0f, out[1]);
    EXPECT_EQ(kSentinel, out[2]); // only r results are written
}

TEST(LinAlgMxV, WithStrideEqualToCIsTheOrdinaryProduct)
{
    const std::array<float, 6> m = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f};
    const std::array<float, 2> v = {0.5f, -1.0f};
    std::array<float, 3> out = {kSentinel, kSentinel, kSentinel};
    LinAlg::MxV(out.data(), m.data(), v.data(), 3, 2, 2);
    EXPECT_EQ(-1.5f, out[0]);
    EXPECT_EQ(-2.5f, out[1]);
    EXPECT_EQ(-3.5f, out[2]);
}

TEST(LinAlgMxV, EachRowIsSummedInColumnOrderInFloat)
{
    // Row 0 gives the products 1e8, 1, -1e8, 1: 1e8 + 1 rounds back to 1e8,
    // so the row sums to 1 (2 if summed exactly). Row 1 is a plain check.
    const std::array<float, 8> m = {1e4f, 1.0f, -1e4f, 1.0f, 0.1f, 0.2f, 0.3f, 0.4f};
    const std::array<float, 4> v = {1e4f, 1.0f, 1e4f, 1.0f};
    std::array<float, 2> out = {kSentinel, kSentinel};
    LinAlg::MxV(out.data(), m.data(), v.data(), 2, 4, 4);
    EXPECT_EQ(1.0f, out[0]);
    float expected = 0.0f;
    expected += m[4] * v[0];
    expected += m[5] * v[1];
    expected += m[6] * v[2];
    expected += m[7] * v[3];
    EXPECT_EQ(expected, out[1]);
}

TEST(LinAlgMtxV, MultipliesByTheTransposedMatrix)
{
    // m is 3 by 2; out[j] = sum over i of m[i][j] v[i].
    const std::array<float, 6> m = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f};
    const std::array<float, 3> v = {1.0f, -1.0f, 2.0f};
    std::array<float, 3> out = {kSentinel, kSentinel, kSentinel};
    LinAlg::MtxV(out.data(), m.data(), v.data(), 3, 2);
    EXPECT_EQ(1.0f - 3.0f + 10.0f, out[0]);
    EXPECT_EQ(2.0f - 4.0f + 12.0f, out[1]);
    EXPECT_EQ(kSentinel, out[2]); // only c results are written
}

TEST(LinAlgMtxV, EachColumnIsSummedInRowOrderInFloat)
{
    // Column 0 is 1e8, 1, -1e8, 1 times ones: in row order the first 1 is
    // lost next to 1e8 and the sum is 1 (2 exactly). Column 1 is a plain
    // explicit float accumulation.
    const std::array<float, 8> m = {
        1e8f,  0.1f, //
        1.0f,  0.2f, //
        -1e8f, 0.3f, //
        1.0f,  0.4f, //
    };
    const std::array<float, 4> v = {1.0f, 1.0f, 1.0f, 1.0f};
    std::array<float, 2> out = {kSentinel, kSentinel};
    LinAlg::MtxV(out.data(), m.data(), v.data(), 4, 2);
    EXPECT_EQ(1.0f, out[0]);
    float expected = 0.0f;
    expected += m[1] * v[0];
    expected += m[3] * v[1];
    expected += m[5] * v[2];
    expected += m[7] * v[3];
    EXPECT_EQ(expected, out[1]);
}

TEST(LinAlgCopyVector, CopiesNElements)
{
    const std::array<float, 4> a = {1.5f, -2.0f, 0.1f, 9.0f};
    std::array<float, 4> out = {kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::CopyVector(out.data(), a.data(), 3);
    EXPECT_EQ(1.5f, out[0]);
    EXPECT_EQ(-2.0f, out[1]);
    EXPECT_EQ(0.1f, out[2]);
    EXPECT_EQ(kSentinel, out[3]);
}

TEST(LinAlgCopyMatrix, CopiesRTimesCElements)
{
    const std::array<float, 7> a = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f};
    std::array<float, 7> out = {kSentinel, kSentinel, kSentinel, kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::CopyMatrix(out.data(), a.data(), 2, 3);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(a[i], out[i]) << "element " << i;
    }
    EXPECT_EQ(kSentinel, out[6]);
}

TEST(LinAlgMxM, MultipliesATwoByThreeByAThreeByTwo)
{
    const std::array<float, 6> a = {
        1.0f, 2.0f, 3.0f, //
        4.0f, 5.0f, 6.0f, //
    };
    const std::array<float, 6> b = {
        7.0f,  8.0f,  //
        9.0f,  10.0f, //
        11.0f, 12.0f, //
    };
    std::array<float, 5> out = {kSentinel, kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::MxM(out.data(), a.data(), b.data(), 2, 3, 2);
    EXPECT_EQ(58.0f, out[0]);  // 7 + 18 + 33
    EXPECT_EQ(64.0f, out[1]);  // 8 + 20 + 36
    EXPECT_EQ(139.0f, out[2]); // 28 + 45 + 66
    EXPECT_EQ(154.0f, out[3]); // 32 + 50 + 72
    EXPECT_EQ(kSentinel, out[4]);
}

TEST(LinAlgMxM, MultipliesAThreeByTwoByATwoByThree)
{
    // The same matrices the other way round give a 3 by 3 result.
    const std::array<float, 6> b = {7.0f, 8.0f, 9.0f, 10.0f, 11.0f, 12.0f};
    const std::array<float, 6> a = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f};
    std::array<float, 9> out = {};
    LinAlg::MxM(out.data(), b.data(), a.data(), 3, 2, 3);
    const std::array<float, 9> expected = {
        7.0f + 32.0f,  14.0f + 40.0f, 21.0f + 48.0f, //
        9.0f + 40.0f,  18.0f + 50.0f, 27.0f + 60.0f, //
        11.0f + 48.0f, 22.0f + 60.0f, 33.0f + 72.0f, //
    };
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i], out[i]) << "element " << i;
    }
}

TEST(LinAlgMxM, EachElementIsSummedInIndexOrderInFloat)
{
    // out[0][0] collects 1e8, 1, -1e8, 1: the first 1 is lost next to 1e8 and
    // the result is 1 (2 exactly). out[0][1] is an explicit float sum.
    const std::array<float, 4> a = {1e4f, 1.0f, -1e4f, 1.0f}; // 1 by 4
    const std::array<float, 8> b = {
        1e4f, 0.3f,  //
        1.0f, 0.7f,  //
        1e4f, 1.1f,  //
        1.0f, -0.9f, //
    }; // 4 by 2
    std::array<float, 2> out = {kSentinel, kSentinel};
    LinAlg::MxM(out.data(), a.data(), b.data(), 1, 4, 2);
    EXPECT_EQ(1.0f, out[0]);
    float expected = 0.0f;
    expected += a[0] * b[1];
    expected += a[1] * b[3];
    expected += a[2] * b[5];
    expected += a[3] * b[7];
    EXPECT_EQ(expected, out[1]);
}

TEST(LinAlgTranspM, TransposesATwoByThree)
{
    const std::array<float, 6> m = {
        1.0f, 2.0f, 3.0f, //
        4.0f, 5.0f, 6.0f, //
    };
    std::array<float, 7> out = {kSentinel, kSentinel, kSentinel, kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::TranspM(out.data(), m.data(), 2, 3);
    const std::array<float, 6> expected = {
        1.0f, 4.0f, //
        2.0f, 5.0f, //
        3.0f, 6.0f, //
    };
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i], out[i]) << "element " << i;
    }
    EXPECT_EQ(kSentinel, out[6]);
}

TEST(LinAlgMaTxMa, ComputesTheTransposeTimesTheMatrix)
{
    // a is 3 by 2; aT a = {{1+9+25, 2+12+30}, {2+12+30, 4+16+36}}.
    const std::array<float, 6> a = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f};
    std::array<float, 5> out = {kSentinel, kSentinel, kSentinel, kSentinel, kSentinel};
    LinAlg::MaTxMa(a.data(), 3, 2, out.data());
    EXPECT_EQ(35.0f, out[0]);
    EXPECT_EQ(44.0f, out[1]);
    EXPECT_EQ(44.0f, out[2]);
    EXPECT_EQ(56.0f, out[3]);
    EXPECT_EQ(kSentinel, out[4]);
}

TEST(LinAlgMaTxMa, BothTrianglesAreEqualAndMatchMxMOfTheTranspose)
{
    // Values that round, so that the comparison to the last bit means
    // something: a product p q equals q p in float, so aT a through TranspM
    // and MxM (same summation order) must agree exactly, in both triangles.
    const std::array<float, 12> a = {
        0.1f,  1.7f,  -2.3f, //
        3.14f, 0.01f, 5.5f,  //
        -0.7f, 2.2f,  0.33f, //
        1.1f,  -4.4f, 9.81f, //
    }; // 4 by 3
    std::array<float, 9> out = {};
    LinAlg::MaTxMa(a.data(), 4, 3, out.data());

    std::array<float, 12> transposed = {};
    LinAlg::TranspM(transposed.data(), a.data(), 4, 3);
    std::array<float, 9> reference = {};
    LinAlg::MxM(reference.data(), transposed.data(), a.data(), 3, 4, 3);

    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            EXPECT_EQ(out[j * 3 + i], out[i * 3 + j]) << "element " << i << "," << j;
            EXPECT_EQ(reference[i * 3 + j], out[i * 3 + j]) << "element " << i << "," << j;
        }
    }
    // And one element by explicit float steps, rows in index order.
    float expected = 0.0f;
    expected += a[0] * a[2];
    expected += a[3] * a[5];
    expected += a[6] * a[8];
    expected += a[9] * a[11];
    EXPECT_EQ(expected, out[0 * 3 + 2]);
    EXPECT_EQ(expected, out[2 * 3 + 0]);
}

TEST(LinAlgMaTxMa, SumsOverTheRowsInIndexOrderInFloat)
{
    // Column 0 times column 1 gives the products 1e8, 1, -1e8, 1: the first 1
    // is lost next to 1e8, so both off-diagonal elements are 1 (2 exactly).
    const std::array<float, 8> a = {
        1e4f,  1e4f, //
        1.0f,  1.0f, //
        -1e4f, 1e4f, //
        1.0f,  1.0f, //
    };
    std::array<float, 4> out = {};
    LinAlg::MaTxMa(a.data(), 4, 2, out.data());
    EXPECT_EQ(1.0f, out[1]);
    EXPECT_EQ(1.0f, out[2]);
}

// ---------------------------------------------------------------------------
// GaussEl

TEST(LinAlgGaussEl, SolvesATwoByTwoExactly)
{
    // 2 x + y = 4, x + 3 y = 7. The pivot 2 stays, the factor is -0.5 and
    // every step is exact in float: x = 1, y = 2.
    std::array<float, 4> a = {2.0f, 1.0f, 1.0f, 3.0f};
    std::array<float, 2> b = {4.0f, 7.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular);
    EXPECT_FALSE(singular);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
}

TEST(LinAlgGaussEl, SolvesAThreeByThreeExactlyAndOverwritesAAndB)
{
    // Pivots 4 and 3 need no swap; the factors -0.5, -0.25, -0.5 and every
    // intermediate value (3, 1.5, 3.75, 10.5, 14.25, 9) are exact in float,
    // so x = (1, 2, 3) comes out exactly.
    std::array<float, 9> a = {
        4.0f, 2.0f, 1.0f, //
        2.0f, 4.0f, 2.0f, //
        1.0f, 2.0f, 4.0f, //
    };
    std::array<float, 3> b = {11.0f, 16.0f, 17.0f};
    std::array<float, 3> x = {kSentinel, kSentinel, kSentinel};
    std::array<long, 3> rows = {kLongSentinel, kLongSentinel, kLongSentinel};
    std::array<long, 3> order = {kLongSentinel, kLongSentinel, kLongSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 3, singular, rows.data(), order.data());
    EXPECT_FALSE(singular);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
    EXPECT_EQ(3.0f, x[2]);

    // No row was exchanged.
    EXPECT_EQ(0, rows[0]);
    EXPECT_EQ(3, rows[1]);
    EXPECT_EQ(6, rows[2]);
    EXPECT_EQ(0, order[0]);
    EXPECT_EQ(1, order[1]);
    EXPECT_EQ(2, order[2]);

    // The elimination updates only the columns right of the pivot column;
    // the entries below the pivots keep their old values.
    const std::array<float, 9> eliminated = {
        4.0f, 2.0f, 1.0f,  //
        2.0f, 3.0f, 1.5f,  //
        1.0f, 1.5f, 3.0f,  //
    };
    for (std::size_t i = 0; i < eliminated.size(); ++i) {
        EXPECT_EQ(eliminated[i], a[i]) << "element " << i;
    }
    EXPECT_EQ(11.0f, b[0]);
    EXPECT_EQ(10.5f, b[1]);
    EXPECT_EQ(9.0f, b[2]);
}

TEST(LinAlgGaussEl, SolvesAThreeByThreeWithAnIntegerSolutionWithinRounding)
{
    // 2x + y - z = 8, -3x - y + 2z = -11, -2x + y + 2z = -3 has the solution
    // (2, 3, -1). The pivot -3 gives the factors 2/3, which float cannot hold,
    // so the result is only accurate to a few units in the last place.
    std::array<float, 9> a = {
        2.0f,  1.0f,  -1.0f, //
        -3.0f, -1.0f, 2.0f,  //
        -2.0f, 1.0f,  2.0f,  //
    };
    std::array<float, 3> b = {8.0f, -11.0f, -3.0f};
    std::array<float, 3> x = {kSentinel, kSentinel, kSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 3, singular);
    EXPECT_FALSE(singular);
    EXPECT_NEAR(2.0f, x[0], 1e-5f);
    EXPECT_NEAR(3.0f, x[1], 1e-5f);
    EXPECT_NEAR(-1.0f, x[2], 1e-5f);
}

TEST(LinAlgGaussEl, AZeroInTheFirstPivotPositionIsPivotedAway)
{
    // y = 2, x + y = 3: the first pivot candidate is 0, the second row is
    // taken instead and the system solves exactly to x = 1, y = 2.
    std::array<float, 4> a = {0.0f, 1.0f, 1.0f, 1.0f};
    std::array<float, 2> b = {2.0f, 3.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<long, 2> rows = {kLongSentinel, kLongSentinel};
    std::array<long, 2> order = {kLongSentinel, kLongSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular, rows.data(), order.data());
    EXPECT_FALSE(singular);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
    // The permutation lives in the index arrays: row 1 (starting at 2) first.
    EXPECT_EQ(2, rows[0]);
    EXPECT_EQ(0, rows[1]);
    EXPECT_EQ(1, order[0]);
    EXPECT_EQ(0, order[1]);
}

TEST(LinAlgGaussEl, ShortFormPivotsLikeTheLongForm)
{
    std::array<float, 4> a = {0.0f, 1.0f, 1.0f, 1.0f};
    std::array<float, 2> b = {2.0f, 3.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular);
    EXPECT_FALSE(singular);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
}

TEST(LinAlgGaussEl, EqualPivotCandidatesKeepTheFirstRow)
{
    // |2| == |-2|: the comparison is strict, so row 0 stays the pivot row.
    // Observable three ways: the index arrays are unchanged, row 0 of a and
    // b[0] are untouched, and row 1 was eliminated with the factor 1
    // (a[1][1] = 3 + 1 * 1 = 4, b[1] = 1 + 1 * 3 = 4). Had row 1 been taken,
    // row 0 would have been eliminated instead (a[0][1] = 1 + 3 = 4).
    std::array<float, 4> a = {2.0f, 1.0f, -2.0f, 3.0f};
    std::array<float, 2> b = {3.0f, 1.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<long, 2> rows = {kLongSentinel, kLongSentinel};
    std::array<long, 2> order = {kLongSentinel, kLongSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular, rows.data(), order.data());
    EXPECT_FALSE(singular);
    EXPECT_EQ(0, rows[0]);
    EXPECT_EQ(2, rows[1]);
    EXPECT_EQ(0, order[0]);
    EXPECT_EQ(1, order[1]);
    EXPECT_EQ(2.0f, a[0]);
    EXPECT_EQ(1.0f, a[1]);
    EXPECT_EQ(4.0f, a[3]);
    EXPECT_EQ(3.0f, b[0]);
    EXPECT_EQ(4.0f, b[1]);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(1.0f, x[1]);
}

TEST(LinAlgGaussEl, EqualPivotCandidatesKeepTheFirstRowInTheShortForm)
{
    // Same system as above: with row 0 as pivot, row 0 and b[0] are untouched.
    std::array<float, 4> a = {2.0f, 1.0f, -2.0f, 3.0f};
    std::array<float, 2> b = {3.0f, 1.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular);
    EXPECT_FALSE(singular);
    EXPECT_EQ(1.0f, a[1]);
    EXPECT_EQ(4.0f, a[3]);
    EXPECT_EQ(3.0f, b[0]);
    EXPECT_EQ(4.0f, b[1]);
}

TEST(LinAlgGaussEl, AStrictlyLargerLaterCandidateBecomesThePivot)
{
    // Column 0 holds 1, -2, 4: the largest magnitude is the last row, so
    // rows[0] = 6 and order[0] = 2 (and row 0 goes where row 2 was). After
    // the first step column 1 holds 1 (original row 1) and 2 (original row
    // 0): the later, larger one wins again. Every factor (0.5, -0.25, -0.5)
    // is exact, and x = (1, 1, 1).
    std::array<float, 9> a = {
        1.0f,  2.0f, 3.0f, //
        -2.0f, 1.0f, 0.0f, //
        4.0f,  0.0f, 2.0f, //
    };
    std::array<float, 3> b = {6.0f, -1.0f, 6.0f};
    std::array<float, 3> x = {kSentinel, kSentinel, kSentinel};
    std::array<long, 3> rows = {kLongSentinel, kLongSentinel, kLongSentinel};
    std::array<long, 3> order = {kLongSentinel, kLongSentinel, kLongSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 3, singular, rows.data(), order.data());
    EXPECT_FALSE(singular);
    EXPECT_EQ(6, rows[0]);
    EXPECT_EQ(0, rows[1]);
    EXPECT_EQ(3, rows[2]);
    EXPECT_EQ(2, order[0]);
    EXPECT_EQ(0, order[1]);
    EXPECT_EQ(1, order[2]);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(1.0f, x[1]);
    EXPECT_EQ(1.0f, x[2]);
}

TEST(LinAlgGaussEl, AmongEqualLaterCandidatesTheFirstIsChosen)
{
    // Column 0 holds 1, 4, -4: row 1 beats row 0, and row 2 only ties with
    // row 1, so row 1 is the pivot (rows[0] = 3, order[0] = 1). After that
    // step column 1 holds 0.5 (original row 0) and 2 (original row 2), and
    // row 2 is taken: rows = (3, 6, 0), order = (1, 2, 0). x = (1, 1, 1).
    std::array<float, 9> a = {
        1.0f,  1.0f, 1.0f, //
        4.0f,  2.0f, 0.0f, //
        -4.0f, 0.0f, 2.0f, //
    };
    std::array<float, 3> b = {3.0f, 6.0f, -2.0f};
    std::array<float, 3> x = {kSentinel, kSentinel, kSentinel};
    std::array<long, 3> rows = {kLongSentinel, kLongSentinel, kLongSentinel};
    std::array<long, 3> order = {kLongSentinel, kLongSentinel, kLongSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 3, singular, rows.data(), order.data());
    EXPECT_FALSE(singular);
    EXPECT_EQ(3, rows[0]);
    EXPECT_EQ(6, rows[1]);
    EXPECT_EQ(0, rows[2]);
    EXPECT_EQ(1, order[0]);
    EXPECT_EQ(2, order[1]);
    EXPECT_EQ(0, order[2]);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(1.0f, x[1]);
    EXPECT_EQ(1.0f, x[2]);
}

TEST(LinAlgGaussEl, TwoEqualRowsAreSingularAndLeaveXUnwritten)
{
    // Row 1 minus row 0 leaves exactly 0 as the second pivot.
    std::array<float, 4> a = {1.0f, 2.0f, 1.0f, 2.0f};
    std::array<float, 2> b = {3.0f, 3.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    bool singular = false;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular);
    EXPECT_TRUE(singular);
    EXPECT_EQ(kSentinel, x[0]);
    EXPECT_EQ(kSentinel, x[1]);
}

TEST(LinAlgGaussEl, AZeroColumnIsSingularBeforeAnythingIsEliminated)
{
    // The first pivot is 0 among all candidates: the solver stops at once,
    // so neither a, b nor x has been written.
    std::array<float, 4> a = {0.0f, 1.0f, 0.0f, 2.0f};
    std::array<float, 2> b = {5.0f, 6.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<long, 2> rows = {kLongSentinel, kLongSentinel};
    std::array<long, 2> order = {kLongSentinel, kLongSentinel};
    bool singular = false;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular, rows.data(), order.data());
    EXPECT_TRUE(singular);
    EXPECT_EQ(kSentinel, x[0]);
    EXPECT_EQ(kSentinel, x[1]);
    EXPECT_EQ(0.0f, a[0]);
    EXPECT_EQ(1.0f, a[1]);
    EXPECT_EQ(0.0f, a[2]);
    EXPECT_EQ(2.0f, a[3]);
    EXPECT_EQ(5.0f, b[0]);
    EXPECT_EQ(6.0f, b[1]);
}

TEST(LinAlgGaussEl, ASingularLastPivotLeavesAllOfXUnwritten)
{
    // Column 2 is all zero: the first two steps go through, the third pivot
    // is 0, and the back substitution never starts.
    std::array<float, 9> a = {
        1.0f, 0.0f, 0.0f, //
        0.0f, 1.0f, 0.0f, //
        1.0f, 1.0f, 0.0f, //
    };
    std::array<float, 3> b = {1.0f, 2.0f, 3.0f};
    std::array<float, 3> x = {kSentinel, kSentinel, kSentinel};
    bool singular = false;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 3, singular);
    EXPECT_TRUE(singular);
    EXPECT_EQ(kSentinel, x[0]);
    EXPECT_EQ(kSentinel, x[1]);
    EXPECT_EQ(kSentinel, x[2]);
}

TEST(LinAlgGaussEl, OnlyAnExactlyZeroPivotIsSingular)
{
    // A tiny but non-zero pivot is used as it is: there is no tolerance.
    std::array<float, 1> a = {1e-30f};
    std::array<float, 1> b = {1e-30f};
    std::array<float, 1> x = {kSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 1, singular);
    EXPECT_FALSE(singular);
    EXPECT_EQ(1.0f, x[0]);
}

TEST(LinAlgGaussEl, SingularIsClearedAtTheStart)
{
    std::array<float, 4> a = {2.0f, 1.0f, 1.0f, 3.0f};
    std::array<float, 2> b = {4.0f, 7.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<long, 2> rows = {kLongSentinel, kLongSentinel};
    std::array<long, 2> order = {kLongSentinel, kLongSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular, rows.data(), order.data());
    EXPECT_FALSE(singular);

    // And a regular system after a singular one clears it again.
    std::array<float, 4> equalRows = {1.0f, 2.0f, 1.0f, 2.0f};
    std::array<float, 2> b2 = {3.0f, 3.0f};
    LinAlg::GaussEl(b2.data(), equalRows.data(), x.data(), 2, singular);
    EXPECT_TRUE(singular);
    std::array<float, 4> a3 = {2.0f, 1.0f, 1.0f, 3.0f};
    std::array<float, 2> b3 = {4.0f, 7.0f};
    LinAlg::GaussEl(b3.data(), a3.data(), x.data(), 2, singular);
    EXPECT_FALSE(singular);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
}

TEST(LinAlgGaussEl, OverwritesAAndB)
{
    std::array<float, 4> a = {2.0f, 1.0f, 1.0f, 3.0f};
    std::array<float, 2> b = {4.0f, 7.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular);
    EXPECT_FALSE(singular);
    // Row 1 minus half of row 0: a[1][1] = 3 - 0.5 = 2.5, b[1] = 7 - 2 = 5.
    EXPECT_EQ(2.5f, a[3]);
    EXPECT_EQ(5.0f, b[1]);
    EXPECT_EQ(2.0f, a[0]);
    EXPECT_EQ(4.0f, b[0]);
}

TEST(LinAlgGaussEl, SolvesAOneByOneSystem)
{
    std::array<float, 1> a = {4.0f};
    std::array<float, 1> b = {10.0f};
    std::array<float, 1> x = {kSentinel};
    std::array<long, 1> rows = {kLongSentinel};
    std::array<long, 1> order = {kLongSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 1, singular, rows.data(), order.data());
    EXPECT_FALSE(singular);
    EXPECT_EQ(2.5f, x[0]);
    EXPECT_EQ(0, rows[0]);
    EXPECT_EQ(0, order[0]);
}

TEST(LinAlgGaussEl, AOneByOneZeroIsSingular)
{
    std::array<float, 1> a = {0.0f};
    std::array<float, 1> b = {10.0f};
    std::array<float, 1> x = {kSentinel};
    bool singular = false;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 1, singular);
    EXPECT_TRUE(singular);
    EXPECT_EQ(kSentinel, x[0]);
}

TEST(LinAlgGaussEl, BackSubstitutionSubtractsInColumnOrderInFloat)
{
    // An upper triangular system with row 0 = (1, 1, 1e8, 1, -1e8): the
    // elimination changes nothing (all factors are -0), x[1..4] = 1, and
    // x[0] = 0 - 1 - 1e8 - 1 + 1e8. Subtracting in column order: -1, then
    // -1 - 1e8 rounds to -1e8, the next 1 is lost as well, and + 1e8 gives 0.
    // The exact value is -2; the reverse column order would give -1.
    std::array<float, 25> a = {
        1.0f, 1.0f, 1e8f, 1.0f, -1e8f, //
        0.0f, 1.0f, 0.0f, 0.0f, 0.0f,  //
        0.0f, 0.0f, 1.0f, 0.0f, 0.0f,  //
        0.0f, 0.0f, 0.0f, 1.0f, 0.0f,  //
        0.0f, 0.0f, 0.0f, 0.0f, 1.0f,  //
    };
    std::array<float, 5> b = {0.0f, 1.0f, 1.0f, 1.0f, 1.0f};
    std::array<float, 5> x = {kSentinel, kSentinel, kSentinel, kSentinel, kSentinel};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 5, singular);
    EXPECT_FALSE(singular);
    EXPECT_EQ(0.0f, x[0]);
    EXPECT_EQ(1.0f, x[1]);
    EXPECT_EQ(1.0f, x[2]);
    EXPECT_EQ(1.0f, x[3]);
    EXPECT_EQ(1.0f, x[4]);
}

TEST(LinAlgGaussEl, TheIndexArraysNeedNoInitialisation)
{
    // rows and order are set up by the solver itself, whatever they held.
    std::array<float, 4> a = {2.0f, 1.0f, 1.0f, 3.0f};
    std::array<float, 2> b = {4.0f, 7.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<long, 2> rows = {1, 1};
    std::array<long, 2> order = {1, 1};
    bool singular = true;
    LinAlg::GaussEl(b.data(), a.data(), x.data(), 2, singular, rows.data(), order.data());
    EXPECT_FALSE(singular);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
    EXPECT_EQ(0, rows[0]);
    EXPECT_EQ(2, rows[1]);
    EXPECT_EQ(0, order[0]);
    EXPECT_EQ(1, order[1]);
}

TEST(LinAlgGaussEl, ShortAndLongFormGiveTheSameBits)
{
    const std::array<float, 9> a0 = {
        0.3f,  1.7f, -2.2f, //
        4.1f,  0.9f, 0.05f, //
        -1.3f, 2.8f, 3.3f,  //
    };
    const std::array<float, 3> b0 = {0.7f, -1.9f, 2.6f};
    std::array<float, 9> a1 = a0;
    std::array<float, 3> b1 = b0;
    std::array<float, 9> a2 = a0;
    std::array<float, 3> b2 = b0;
    std::array<float, 3> x1 = {kSentinel, kSentinel, kSentinel};
    std::array<float, 3> x2 = {-kSentinel, -kSentinel, -kSentinel};
    std::array<long, 3> rows = {kLongSentinel, kLongSentinel, kLongSentinel};
    std::array<long, 3> order = {kLongSentinel, kLongSentinel, kLongSentinel};
    bool singular1 = true;
    bool singular2 = true;
    LinAlg::GaussEl(b1.data(), a1.data(), x1.data(), 3, singular1, rows.data(), order.data());
    LinAlg::GaussEl(b2.data(), a2.data(), x2.data(), 3, singular2);
    EXPECT_FALSE(singular1);
    EXPECT_FALSE(singular2);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(x1[i], x2[i]) << "unknown " << i;
    }
    // And the solution does solve the system (float rounding only).
    for (std::size_t i = 0; i < 3; ++i) {
        const double lhs = static_cast<double>(a0[i * 3]) * x1[0] + static_cast<double>(a0[i * 3 + 1]) * x1[1]
                           + static_cast<double>(a0[i * 3 + 2]) * x1[2];
        EXPECT_NEAR(b0[i], lhs, 1e-5) << "equation " << i;
    }
}

// ---------------------------------------------------------------------------
// LeastSquareFit

TEST(LinAlgLeastSquareFit, FewerEquationsThanUnknownsFailsAndLeavesXUnwritten)
{
    const std::array<float, 1> w = {1.0f};
    std::array<float, 1> y = {3.0f};
    std::array<float, 2> a = {1.0f, 2.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {kSentinel, kSentinel, kSentinel, kSentinel};
    std::array<float, 2> atb = {kSentinel, kSentinel};
    std::array<long, 2> rows = {kLongSentinel, kLongSentinel};
    std::array<long, 2> order = {kLongSentinel, kLongSentinel};
    bool ok = true;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 1, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(kSentinel, x[0]);
    EXPECT_EQ(kSentinel, x[1]);
    // It gives up before any work: nothing else was touched either.
    EXPECT_EQ(3.0f, y[0]);
    EXPECT_EQ(1.0f, a[0]);
    EXPECT_EQ(2.0f, a[1]);
    EXPECT_EQ(kSentinel, ata[0]);
    EXPECT_EQ(kSentinel, atb[0]);
}

TEST(LinAlgLeastSquareFit, AsManyEquationsAsUnknownsIgnoresTheWeights)
{
    const std::array<float, 9> a0 = {
        0.3f,  1.7f, -2.2f, //
        4.1f,  0.9f, 0.05f, //
        -1.3f, 2.8f, 3.3f,  //
    };
    const std::array<float, 3> y0 = {0.7f, -1.9f, 2.6f};

    const std::array<float, 3> unitWeights = {1.0f, 1.0f, 1.0f};
    std::array<float, 9> a1 = a0;
    std::array<float, 3> y1 = y0;
    std::array<float, 3> x1 = {kSentinel, kSentinel, kSentinel};
    std::array<float, 9> ata1 = {};
    std::array<float, 3> atb1 = {};
    std::array<long, 3> rows1 = {};
    std::array<long, 3> order1 = {};
    bool ok1 = false;
    LinAlg::LeastSquareFit(unitWeights.data(), y1.data(), a1.data(), x1.data(), 3, 3, ata1.data(), atb1.data(),
                           rows1.data(), order1.data(), ok1);

    // Weights that would change every bit of the result were they applied.
    const std::array<float, 3> wildWeights = {1000.0f, -0.001f, 0.0f};
    std::array<float, 9> a2 = a0;
    std::array<float, 3> y2 = y0;
    std::array<float, 3> x2 = {-kSentinel, -kSentinel, -kSentinel};
    std::array<float, 9> ata2 = {};
    std::array<float, 3> atb2 = {};
    std::array<long, 3> rows2 = {};
    std::array<long, 3> order2 = {};
    bool ok2 = false;
    LinAlg::LeastSquareFit(wildWeights.data(), y2.data(), a2.data(), x2.data(), 3, 3, ata2.data(), atb2.data(),
                           rows2.data(), order2.data(), ok2);

    // The system is solved directly, exactly as GaussEl solves it.
    std::array<float, 9> a3 = a0;
    std::array<float, 3> y3 = y0;
    std::array<float, 3> x3 = {0.0f, 0.0f, 0.0f};
    bool singular = true;
    LinAlg::GaussEl(y3.data(), a3.data(), x3.data(), 3, singular);

    EXPECT_TRUE(ok1);
    EXPECT_TRUE(ok2);
    EXPECT_FALSE(singular);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(x3[i], x1[i]) << "unknown " << i;
        EXPECT_EQ(x3[i], x2[i]) << "unknown " << i;
    }
}

TEST(LinAlgLeastSquareFit, AsManyEquationsAsUnknownsAndSingularFails)
{
    const std::array<float, 2> w = {1.0f, 1.0f};
    std::array<float, 2> y = {3.0f, 3.0f};
    std::array<float, 4> a = {1.0f, 2.0f, 1.0f, 2.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = true;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 2, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(kSentinel, x[0]);
    EXPECT_EQ(kSentinel, x[1]);
}

TEST(LinAlgLeastSquareFit, OkIsSetAtTheStart)
{
    const std::array<float, 2> w = {1.0f, 1.0f};
    std::array<float, 2> y = {4.0f, 7.0f};
    std::array<float, 4> a = {2.0f, 1.0f, 1.0f, 3.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = false;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 2, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
}

TEST(LinAlgLeastSquareFit, PointsOnALineGiveTheLineExactlyWithDyadicWeights)
{
    // y = 1 + 2 t at t = 0..4; the line fits every point, so any positive
    // weights give p = (1, 2). With weights that are powers of two every
    // product, sum and quotient on the way (normal equations 22.25, 56.5,
    // 165 and 135.25, 386.5) is exact in float, so the answer is exact.
    const std::array<float, 5> w = {1.0f, 2.0f, 0.5f, 4.0f, 1.0f};
    std::array<float, 5> y = {1.0f, 3.0f, 5.0f, 7.0f, 9.0f};
    std::array<float, 10> a = {
        1.0f, 0.0f, //
        1.0f, 1.0f, //
        1.0f, 2.0f, //
        1.0f, 3.0f, //
        1.0f, 4.0f, //
    };
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = false;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 5, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
}

TEST(LinAlgLeastSquareFit, PointsOnALineGiveTheLineWithAnyPositiveWeights)
{
    // y = 0.5 + 0.25 t. Weights such as 0.3 and 1.7 make the products round,
    // so the answer is the line only to within float rounding of the normal
    // equations (a few units in the last place of 0.5).
    const std::array<float, 5> w = {0.3f, 1.7f, 2.5f, 0.9f, 1.1f};
    std::array<float, 5> y = {0.5f, 0.75f, 1.0f, 1.25f, 1.5f};
    std::array<float, 10> a = {
        1.0f, 0.0f, //
        1.0f, 1.0f, //
        1.0f, 2.0f, //
        1.0f, 3.0f, //
        1.0f, 4.0f, //
    };
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = false;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 5, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_TRUE(ok);
    EXPECT_NEAR(0.5f, x[0], 1e-5f);
    EXPECT_NEAR(0.25f, x[1], 1e-5f);
}

TEST(LinAlgLeastSquareFit, InconsistentPointsGiveTheWeightedNormalEquationsSolution)
{
    // Each row of a and each y is multiplied by w[i], so the normal
    // equations weight each equation with w[i] squared. The reference solves
    // them in double; the float path rounds every product and sum and the
    // elimination divides, hence the tolerance. Weighting with w[i] instead
    // of its square would move the answer by about 0.08, far outside it.
    const std::array<float, 4> w = {1.0f, 2.0f, 0.5f, 1.5f};
    const std::array<float, 4> y0 = {1.0f, 2.5f, 2.5f, 5.0f};
    const std::array<float, 8> a0 = {
        1.0f, 0.0f, //
        1.0f, 1.0f, //
        1.0f, 2.0f, //
        1.0f, 3.0f, //
    };
    const std::array<double, 3> expected = WeightedNormalEquationsReference(w.data(), y0.data(), a0.data(), 4, 2);

    std::array<float, 4> y = y0;
    std::array<float, 8> a = a0;
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = false;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 4, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_TRUE(ok);
    EXPECT_NEAR(expected[0], x[0], 1e-4); // 76.1 / 67 = 1.13582...
    EXPECT_NEAR(expected[1], x[1], 1e-4); // 85.5 / 67 = 1.27611...
    EXPECT_NEAR(1.1358209, x[0], 1e-4);
    EXPECT_NEAR(1.2761194, x[1], 1e-4);
}

TEST(LinAlgLeastSquareFit, AWeightedQuadraticFitMatchesTheNormalEquations)
{
    // Three unknowns, six inconsistent points; the reference again solves
    // sum w^2 a aT x = sum w^2 a y in double, and float rounding of the
    // normal equations needs the tolerance.
    const std::array<float, 6> w = {0.5f, 1.0f, 2.0f, 1.5f, 1.0f, 0.25f};
    const std::array<float, 6> y0 = {2.0f, 0.5f, 1.0f, 1.5f, 3.0f, 4.5f};
    const std::array<float, 18> a0 = {
        1.0f, -1.0f, 1.0f,   //
        1.0f, -0.5f, 0.25f,  //
        1.0f, 0.0f,  0.0f,   //
        1.0f, 0.5f,  0.25f,  //
        1.0f, 1.0f,  1.0f,   //
        1.0f, 1.5f,  2.25f,  //
    };
    const std::array<double, 3> expected = WeightedNormalEquationsReference(w.data(), y0.data(), a0.data(), 6, 3);

    std::array<float, 6> y = y0;
    std::array<float, 18> a = a0;
    std::array<float, 3> x = {kSentinel, kSentinel, kSentinel};
    std::array<float, 9> ata = {};
    std::array<float, 3> atb = {};
    std::array<long, 3> rows = {};
    std::array<long, 3> order = {};
    bool ok = false;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 6, 3, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_TRUE(ok);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(expected[i], x[i], 1e-4) << "unknown " << i;
    }
}

TEST(LinAlgLeastSquareFit, TheSignOfAWeightDoesNotMatter)
{
    // A weight enters squared: negating it negates a row and its y, and
    // (-p)(-q) equals p q exactly in float, so the result is bit for bit the
    // same.
    const std::array<float, 4> y0 = {1.0f, 2.5f, 2.5f, 5.0f};
    const std::array<float, 8> a0 = {1.0f, 0.0f, 1.0f, 1.0f, 1.0f, 2.0f, 1.0f, 3.0f};
    const std::array<float, 4> positive = {1.0f, 2.0f, 0.5f, 1.5f};
    const std::array<float, 4> mixed = {-1.0f, 2.0f, -0.5f, 1.5f};

    std::array<float, 4> y1 = y0;
    std::array<float, 8> a1 = a0;
    std::array<float, 2> x1 = {kSentinel, kSentinel};
    std::array<float, 4> ata1 = {};
    std::array<float, 2> atb1 = {};
    std::array<long, 2> rows1 = {};
    std::array<long, 2> order1 = {};
    bool ok1 = false;
    LinAlg::LeastSquareFit(positive.data(), y1.data(), a1.data(), x1.data(), 4, 2, ata1.data(), atb1.data(),
                           rows1.data(), order1.data(), ok1);

    std::array<float, 4> y2 = y0;
    std::array<float, 8> a2 = a0;
    std::array<float, 2> x2 = {-kSentinel, -kSentinel};
    std::array<float, 4> ata2 = {};
    std::array<float, 2> atb2 = {};
    std::array<long, 2> rows2 = {};
    std::array<long, 2> order2 = {};
    bool ok2 = false;
    LinAlg::LeastSquareFit(mixed.data(), y2.data(), a2.data(), x2.data(), 4, 2, ata2.data(), atb2.data(),
                           rows2.data(), order2.data(), ok2);

    EXPECT_TRUE(ok1);
    EXPECT_TRUE(ok2);
    EXPECT_EQ(x1[0], x2[0]);
    EXPECT_EQ(x1[1], x2[1]);
}

TEST(LinAlgLeastSquareFit, AZeroWeightDropsAnEquation)
{
    // Three equations for two unknowns, the third far off the line through
    // the first two; with weight 0 it has no say, and the line through
    // (0, 1) and (1, 3) comes out exactly (all values small integers).
    const std::array<float, 3> w = {1.0f, 1.0f, 0.0f};
    std::array<float, 3> y = {1.0f, 3.0f, 10.0f};
    std::array<float, 6> a = {1.0f, 0.0f, 1.0f, 1.0f, 1.0f, 2.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = false;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 3, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(1.0f, x[0]);
    EXPECT_EQ(2.0f, x[1]);
}

TEST(LinAlgLeastSquareFit, TwoIdenticalColumnsAreSingular)
{
    // aT a has four equal elements, so the second pivot is exactly 0.
    const std::array<float, 3> w = {1.0f, 0.5f, 3.0f};
    std::array<float, 3> y = {1.0f, 2.0f, 4.0f};
    std::array<float, 6> a = {1.0f, 1.0f, 2.0f, 2.0f, 3.0f, 3.0f};
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = true;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 3, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(kSentinel, x[0]);
    EXPECT_EQ(kSentinel, x[1]);
}

TEST(LinAlgLeastSquareFit, OverDeterminedFitLeavesAAndYMultipliedByTheWeights)
{
    const std::array<float, 4> w = {0.3f, 2.0f, -1.7f, 0.5f};
    const std::array<float, 4> y0 = {1.1f, 2.5f, 2.9f, 5.3f};
    const std::array<float, 8> a0 = {1.0f, 0.1f, 1.0f, 1.3f, 1.0f, 2.2f, 1.0f, 3.7f};
    std::array<float, 4> y = y0;
    std::array<float, 8> a = a0;
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = false;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 4, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);
    EXPECT_TRUE(ok);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(y0[i] * w[i], y[i]) << "y " << i;
        EXPECT_EQ(a0[i * 2] * w[i], a[i * 2]) << "a " << i << ",0";
        EXPECT_EQ(a0[i * 2 + 1] * w[i], a[i * 2 + 1]) << "a " << i << ",1";
    }
}

TEST(LinAlgLeastSquareFit, OverDeterminedFitSolvesTheFloatNormalEquations)
{
    // The fit is the composition of the float steps: weight the rows and y,
    // form aT a with MaTxMa and aT y with MtxV, and solve with GaussEl. Built
    // from the same steps here, the result agrees to the last bit.
    const std::array<float, 5> w = {0.3f, 1.7f, 2.5f, 0.9f, 1.1f};
    const std::array<float, 5> y0 = {0.4f, 0.8f, 1.3f, 1.2f, 1.6f};
    const std::array<float, 10> a0 = {
        1.0f, 0.0f,  //
        1.0f, 0.7f,  //
        1.0f, 1.9f,  //
        1.0f, 3.1f,  //
        1.0f, 4.3f,  //
    };

    std::array<float, 5> y = y0;
    std::array<float, 10> a = a0;
    std::array<float, 2> x = {kSentinel, kSentinel};
    std::array<float, 4> ata = {};
    std::array<float, 2> atb = {};
    std::array<long, 2> rows = {};
    std::array<long, 2> order = {};
    bool ok = false;
    LinAlg::LeastSquareFit(w.data(), y.data(), a.data(), x.data(), 5, 2, ata.data(), atb.data(), rows.data(),
                           order.data(), ok);

    std::array<float, 10> weighted = {};
    std::array<float, 5> weightedY = {};
    for (std::size_t i = 0; i < 5; ++i) {
        weighted[i * 2] = a0[i * 2] * w[i];
        weighted[i * 2 + 1] = a0[i * 2 + 1] * w[i];
        weightedY[i] = y0[i] * w[i];
    }
    std::array<float, 4> refAta = {};
    std::array<float, 2> refAtb = {0.0f, 0.0f};
    for (std::size_t i = 0; i < 5; ++i) {
        refAta[0] += weighted[i * 2] * weighted[i * 2];
        refAta[1] += weighted[i * 2] * weighted[i * 2 + 1];
        refAta[3] += weighted[i * 2 + 1] * weighted[i * 2 + 1];
        refAtb[0] += weighted[i * 2] * weightedY[i];
        refAtb[1] += weighted[i * 2 + 1] * weightedY[i];
    }
    refAta[2] = refAta[1];
    std::array<float, 2> refX = {0.0f, 0.0f};
    bool singular = true;
    LinAlg::GaussEl(refAtb.data(), refAta.data(), refX.data(), 2, singular);

    EXPECT_TRUE(ok);
    EXPECT_FALSE(singular);
    EXPECT_EQ(refX[0], x[0]);
    EXPECT_EQ(refX[1], x[1]);
}

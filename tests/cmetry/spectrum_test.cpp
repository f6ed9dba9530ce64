// QVSpectrum on the fixed 36-point grid, QVSample, and the user-defined
// illumination that a condition set keeps.

#include "qvimanager/cmetry/spectrum.h"

#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using CMetry::QVMeasureConditions;
using CMetry::QVSample;
using CMetry::QVSpectrum;
using CMetry::TestAccess;
using TestSupport::FailureText;
using Utilities::ExceptionNullpointer;
using Utilities::ExceptionOutOfBound;
using Utilities::String;
using Utilities::Vector;

namespace {

// 0.01, 0.02, ... 0.36 as floats.
QVSpectrum Ramp(float scale = 1.0f)
{
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = static_cast<float>(i + 1) * 0.01f * scale;
    }
    return QVSpectrum(values);
}

QVMeasureConditions TenDegree()
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Colorimetric.Observer"), String("TenDegree"));
    return conditions;
}

} // namespace

TEST(QVSpectrum, DefaultIsAllZerosNotValidButSaysValid)
{
    const QVSpectrum spectrum;
    for (long i = 0; i < 36; ++i) {
        EXPECT_EQ(0.0f, spectrum[i]);
    }
    EXPECT_FALSE(spectrum.IsValid());
    EXPECT_STREQ("valid", spectrum.GetValueString().c_str());
    EXPECT_TRUE(spectrum.GetMeasureConditions() == QVMeasureConditions());
}

TEST(QVSpectrum, OneSmallPositiveValueMakesItValid)
{
    float values[36] = {};
    values[20] = 0.001f;
    EXPECT_TRUE(QVSpectrum(values).IsValid());
}

TEST(QVSpectrum, NegativeValuesAndZerosAreNotValid)
{
    float values[36] = {};
    values[0] = -1.0f;
    values[35] = -0.5f;
    EXPECT_FALSE(QVSpectrum(values).IsValid());
}

TEST(QVSpectrum, ArrayConstructorsKeepValuesAndConditions)
{
    const QVSpectrum spectrum = Ramp();
    EXPECT_EQ(0.01f, spectrum[0]);
    EXPECT_EQ(36.0f * 0.01f, spectrum[35]);
    float values[36] = {};
    values[3] = 0.5f;
    const QVSpectrum withConditions(values, TenDegree());
    EXPECT_EQ(0.5f, withConditions[3]);
    EXPECT_STREQ("TenDegree",
                 withConditions.GetMeasureConditions().GetMeasureCondition(String("Colorimetric.Observer")).GetCharPointer());
}

TEST(QVSpectrum, VectorConstructorReadsThirtySixValuesAndCutsALongerVector)
{
    Vector<float> values(40);
    for (unsigned long i = 0; i < 40; ++i) {
        values[i] = static_cast<float>(i);
    }
    const QVSpectrum spectrum(values);
    EXPECT_EQ(0.0f, spectrum[0]);
    EXPECT_EQ(35.0f, spectrum[35]);
    const QVSpectrum withConditions(values, TenDegree());
    EXPECT_TRUE(withConditions.GetMeasureConditions() == TenDegree());
}

TEST(QVSpectrum, ShorterVectorIsRefused)
{
    const Vector<float> values(35);
    EXPECT_EQ("vector index >= vector size", FailureText<ExceptionOutOfBound>([&] { QVSpectrum spectrum(values); }));
    EXPECT_EQ("vector index >= vector size",
              FailureText<ExceptionOutOfBound>([&] { QVSpectrum spectrum(values, TenDegree()); }));
}

TEST(QVSpectrum, IndexOutsideTheGridIsRefused)
{
    const QVSpectrum spectrum = Ramp();
    for (const long index :
         {36L, -1L, 37L, 1000000L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
        EXPECT_EQ("QVSpectrum::operator[]: index out of range",
                  FailureText<ExceptionOutOfBound>([&] { (void)spectrum[index]; }))
            << index;
    }
    // Both ends of the range read their values.
    EXPECT_EQ(0.01f, spectrum[0]);
    EXPECT_EQ(36.0f * 0.01f, spectrum[35]);
}

TEST(QVSpectrum, GetValuesGivesANewVectorOfThirtySix)
{
    const QVSpectrum spectrum = Ramp();
    Vector<float> values = spectrum.GetValues();
    ASSERT_EQ(36UL, values.GetSize());
    EXPECT_EQ(18.0f * 0.01f, values[17]);
    values[17] = 9.0f;
    EXPECT_EQ(18.0f * 0.01f, spectrum[17]);
}

TEST(QVSpectrum, EqualityComparesEveryValueExactlyAndTheConditions)
{
    EXPECT_TRUE(Ramp() == Ramp());
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = static_cast<float>(i + 1) * 0.01f;
    }
    values[35] = std::nextafter(values[35], 1.0f);
    EXPECT_FALSE(Ramp() == QVSpectrum(values));
    const Vector<float> same = Ramp().GetValues();
    EXPECT_FALSE(Ramp() == QVSpectrum(same, TenDegree()));
    float nan[36] = {};
    nan[0] = std::numeric_limits<float>::quiet_NaN();
    const QVSpectrum withNan(nan);
    EXPECT_FALSE(withNan == withNan);
}

TEST(QVSpectrum, CopyAndAssignmentTakeEverything)
{
    const QVSpectrum source(Ramp().GetValues(), TenDegree());
    const QVSpectrum copy(source);
    EXPECT_TRUE(copy == source);
    QVSpectrum assigned;
    assigned = source;
    EXPECT_TRUE(assigned == source);
    const QVSpectrum& self = assigned;
    assigned = self;
    EXPECT_TRUE(assigned == source);
}

TEST(QVSpectrumGrid, ArrayIndexTruncatesAndFoldsEverythingOutsideToZero)
{
    const QVSpectrum spectrum;
    EXPECT_EQ(0, TestAccess::GetArrayIndex(spectrum, 380));
    EXPECT_EQ(35, TestAccess::GetArrayIndex(spectrum, 730));
    EXPECT_EQ(0, TestAccess::GetArrayIndex(spectrum, 740));
    EXPECT_EQ(0, TestAccess::GetArrayIndex(spectrum, 300));
    EXPECT_EQ(0, TestAccess::GetArrayIndex(spectrum, 389));
    EXPECT_EQ(1, TestAccess::GetArrayIndex(spectrum, 395));
    EXPECT_EQ(17, TestAccess::GetArrayIndex(spectrum, 550));
    EXPECT_EQ(35, TestAccess::GetArrayIndex(spectrum, 739));
    EXPECT_EQ(0, TestAccess::GetArrayIndex(spectrum, 379));
    EXPECT_EQ(0, TestAccess::GetArrayIndex(spectrum, 0));
    EXPECT_EQ(0, TestAccess::GetArrayIndex(spectrum, 65535));
}

TEST(QVSpectrumGrid, WaveLengthOfAnIndexAndZeroPastTheGrid)
{
    const QVSpectrum spectrum;
    EXPECT_EQ(380, TestAccess::GetWaveLength(spectrum, 0));
    EXPECT_EQ(730, TestAccess::GetWaveLength(spectrum, 35));
    EXPECT_EQ(550, TestAccess::GetWaveLength(spectrum, 17));
    EXPECT_EQ(0, TestAccess::GetWaveLength(spectrum, 36));
    EXPECT_EQ(0, TestAccess::GetWaveLength(spectrum, 65535));
    EXPECT_EQ(36, TestAccess::GetNrOfDataPoints(spectrum));
}

TEST(QVSpectrumGrid, ConditionsCanBeReplacedByTheEngine)
{
    QVSpectrum spectrum = Ramp();
    const QVMeasureConditions copy = TestAccess::GetPhysMeasCond(spectrum);
    EXPECT_TRUE(copy == QVMeasureConditions());
    TestAccess::SetMeasureConditions(spectrum, TenDegree());
    EXPECT_TRUE(spectrum.GetMeasureConditions() == TenDegree());
}

TEST(QVSample, SetSpectrumAppends)
{
    QVSample sample;
    EXPECT_EQ(0UL, sample.GetItemCount());
    sample.SetSpectrum(Ramp());
    sample.SetSpectrum(Ramp(2.0f));
    EXPECT_EQ(2UL, sample.GetItemCount());
}

TEST(QVSample, AddSampleAppendsInOrderAndReturnsTheNewCount)
{
    QVSample one;
    one.SetSpectrum(Ramp());
    QVSample two;
    two.SetSpectrum(Ramp(2.0f));
    two.SetSpectrum(Ramp(3.0f));
    EXPECT_EQ(3, one.AddSample(two));
    Utilities::ListIterator<QVSpectrum> it = one.Begin();
    it++;
    EXPECT_TRUE(it.Current() == Ramp(2.0f));
    it++;
    EXPECT_TRUE(it.Current() == Ramp(3.0f));
    EXPECT_EQ(3, one.AddSample(QVSample()));
}

TEST(QVSample, SampleTakingInItselfDoublesOnce)
{
    QVSample sample;
    sample.SetSpectrum(Ramp());
    sample.SetSpectrum(Ramp(2.0f));
    EXPECT_EQ(4, sample.AddSample(sample));
}

TEST(QVSample, GetSpectrumAnswersWithTheFirstWhateverTheConditions)
{
    QVSample sample;
    sample.SetSpectrum(Ramp());
    sample.SetSpectrum(QVSpectrum(Ramp(2.0f).GetValues(), TenDegree()));
    QVSpectrum found;
    EXPECT_TRUE(sample.GetSpectrum(TenDegree(), found));
    EXPECT_TRUE(found == Ramp());
}

TEST(QVSample, EmptySampleGivesNoSpectrumAndLeavesTheTargetAlone)
{
    const QVSample sample;
    QVSpectrum target = Ramp();
    EXPECT_FALSE(sample.GetSpectrum(QVMeasureConditions(), target));
    EXPECT_TRUE(target == Ramp());
}

TEST(QVSample, SamplesCompareByTheirFirstSpectrumOnly)
{
    QVSample first;
    first.SetSpectrum(Ramp());
    first.SetSpectrum(Ramp(2.0f));
    QVSample second;
    second.SetSpectrum(Ramp());
    EXPECT_TRUE(first == second);
    QVSample third;
    third.SetSpectrum(Ramp(3.0f));
    EXPECT_FALSE(first == third);
}

TEST(QVSample, ComparingAnEmptySampleRaisesTheIteratorMessage)
{
    QVSample full;
    full.SetSpectrum(Ramp());
    const QVSample empty;
    const char* const expected = "ListIterator::Current(): Can't return value because iterator is invalid";
    EXPECT_EQ(expected, FailureText<ExceptionOutOfBound>([&] { (void)(empty == full); }));
    EXPECT_EQ(expected, FailureText<ExceptionOutOfBound>([&] { (void)(full == empty); }));
}

TEST(QVSample, CopiesAreDeepAndTheValueStringCountsTheSpectra)
{
    QVSample sample;
    sample.SetSpectrum(Ramp());
    QVSample copy(sample);
    copy.SetSpectrum(Ramp());
    EXPECT_EQ(1UL, sample.GetItemCount());
    EXPECT_STREQ("MeasureValueList: 2", copy.GetValueString().c_str());
}

TEST(UserdefinedIllumination, SetKeepsACopyAndSwitchesTheIlluminant)
{
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(Ramp());
    EXPECT_STREQ("Userdefined", conditions.GetMeasureCondition(String("Colorimetric.Illumination")).GetCharPointer());
    EXPECT_TRUE(conditions.GetUserdefinedIllumination() == Ramp());
}

TEST(UserdefinedIllumination, AnyOtherIlluminantDropsTheSpectrum)
{
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(Ramp());
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String("Userdefined"));
    EXPECT_TRUE(conditions.GetUserdefinedIllumination() == Ramp());
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String("D65"));
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { conditions.GetUserdefinedIllumination(); }));
}

TEST(UserdefinedIllumination, FreshConditionsHaveNone)
{
    const QVMeasureConditions conditions;
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { conditions.GetUserdefinedIllumination(); }));
}

TEST(UserdefinedIllumination, CopiesShareItAndEqualityIsIdentity)
{
    QVMeasureConditions first;
    first.SetUserdefinedIllumination(Ramp());
    const QVMeasureConditions copy(first);
    EXPECT_TRUE(copy == first);
    QVMeasureConditions second;
    second.SetUserdefinedIllumination(Ramp());
    EXPECT_FALSE(second == first);
    EXPECT_TRUE(second.GetUserdefinedIllumination() == first.GetUserdefinedIllumination());
}

TEST(UserdefinedIllumination, ASpectrumMayCarryConditionsWithItsOwnUserSpectrum)
{
    QVMeasureConditions inner;
    inner.SetUserdefinedIllumination(Ramp());
    const QVSpectrum carrying(Ramp(2.0f).GetValues(), inner);
    QVMeasureConditions outer;
    outer.SetUserdefinedIllumination(carrying);
    EXPECT_TRUE(outer.GetUserdefinedIllumination().GetMeasureConditions().GetUserdefinedIllumination() == Ramp());
}

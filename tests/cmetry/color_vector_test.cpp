// QVColorVector and its named forms. The vector carries its conditions; its
// arithmetic is single precision, component by component.

#include "qvimanager/cmetry/color_vector.h"

#include "tests/cmetry/test_access.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cmath>

using CMetry::QVColorVector;
using CMetry::QVLab;
using CMetry::QVLCh;
using CMetry::QVLuv;
using CMetry::QVMeasureConditions;
using CMetry::QVXYZ;
using CMetry::TestAccess;
using TestSupport::FailureText;
using Utilities::ExceptionOutOfBound;
using Utilities::String;

namespace {

QVMeasureConditions Conditions(const char* key, const char* value)
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String(key), String(value));
    return conditions;
}

std::string Condition(const QVColorVector& vector, const char* key)
{
    return vector.GetMeasureConditions().GetMeasureCondition(String(key));
}

} // namespace

TEST(QVColorVector, DefaultIsZeroLabAbsoluteAndHasLengthZero)
{
    const QVColorVector vector;
    for (short axis = 0; axis < 4; ++axis) {
        EXPECT_EQ(0.0f, vector[axis]);
    }
    EXPECT_EQ(0.0f, vector.Length());
    EXPECT_EQ("CIELab", Condition(vector, "ColorSpaceDescription.Type"));
    EXPECT_EQ("AbsoluteVector", Condition(vector, "ColorSpaceDescription.AbsoluteOrDeltaVector"));
    EXPECT_TRUE(vector == QVColorVector());
    EXPECT_STREQ("", vector.GetValueString().c_str());
}

TEST(QVColorVector, ThreeValuesLeaveTheFourthZero)
{
    const QVColorVector vector(3.0f, 4.0f, 0.0f, QVMeasureConditions());
    EXPECT_EQ(3.0f, vector[0]);
    EXPECT_EQ(4.0f, vector[1]);
    EXPECT_EQ(0.0f, vector[2]);
    EXPECT_EQ(0.0f, vector[3]);
    EXPECT_EQ(5.0f, vector.Length());
}

TEST(QVColorVector, LengthCountsTheFourthComponent)
{
    QVColorVector vector(1.0f, 2.0f, 2.0f, Conditions("ColorSpaceDescription.Type", "CMYK"));
    EXPECT_EQ(3.0f, vector.Length());
    vector[3] = 4.0f;
    EXPECT_EQ(5.0f, vector.Length());
}

TEST(QVColorVector, LengthSumsInSinglePrecision)
{
    // 4097^2 = 16785409 needs 25 bits and rounds to 16785408 in float; the
    // second square adds 1, which is lost again: a float sum gives
    // sqrt(16785408) while a double sum would give sqrt(16785410).
    const QVColorVector vector(4097.0f, 1.0f, 0.0f, QVMeasureConditions());
    float sum = 0.0f;
    sum += 4097.0f * 4097.0f;
    sum += 1.0f * 1.0f;
    const auto expected = static_cast<float>(std::sqrt(static_cast<double>(sum)));
    EXPECT_EQ(expected, vector.Length());
    EXPECT_EQ(16785408.0f, sum);
}

TEST(QVColorVector, EqualComponentsWithDifferentConditionsAreUnequal)
{
    const QVColorVector lab(1.0f, 2.0f, 3.0f, QVMeasureConditions());
    const QVColorVector xyz(1.0f, 2.0f, 3.0f, Conditions("ColorSpaceDescription.Type", "CIEXYZ"));
    EXPECT_FALSE(lab == xyz);
    EXPECT_TRUE(lab == QVColorVector(1.0f, 2.0f, 3.0f, QVMeasureConditions()));
}

TEST(QVColorVector, EqualityIsExactOnEveryComponent)
{
    const QVColorVector vector(1.0f, 2.0f, 3.0f, QVMeasureConditions());
    for (short axis = 0; axis < 4; ++axis) {
        QVColorVector other(vector);
        other[axis] = std::nextafter(other[axis], 10.0f);
        EXPECT_FALSE(vector == other) << axis;
    }
}

TEST(QVColorVector, AxisOutsideZeroToThreeIsRefused)
{
    QVColorVector vector(1.0f, 2.0f, 3.0f, QVMeasureConditions());
    vector[3] = 4.0f;
    const QVColorVector& constant = vector;
    for (const short axis : {short(-1), short(4), short(5), short(32767), short(-32768)}) {
        EXPECT_EQ("QVColorVector::operator[]: axis out of range",
                  FailureText<ExceptionOutOfBound>([&] { vector[axis] = 9.0f; }))
            << axis;
        EXPECT_EQ("QVColorVector::operator[]: axis out of range",
                  FailureText<ExceptionOutOfBound>([&] { (void)constant[axis]; }))
            << axis;
    }
    // The components inside the range are as they were, through both forms.
    for (short axis = 0; axis < 4; ++axis) {
        EXPECT_EQ(static_cast<float>(axis + 1), constant[axis]) << axis;
        EXPECT_EQ(static_cast<float>(axis + 1), vector[axis]) << axis;
    }
}

TEST(QVColorVector, SubtractingItselfGivesZerosAndKeepsSpaceAndForm)
{
    QVColorVector vector(1.5f, -2.0f, 7.25f, Conditions("ColorSpaceDescription.Type", "CIELuv"));
    vector[3] = 2.0f;
    vector -= vector;
    for (short axis = 0; axis < 4; ++axis) {
        EXPECT_EQ(0.0f, vector[axis]);
    }
    EXPECT_EQ("CIELuv", Condition(vector, "ColorSpaceDescription.Type"));
    EXPECT_EQ("AbsoluteVector", Condition(vector, "ColorSpaceDescription.AbsoluteOrDeltaVector"));
}

TEST(QVColorVector, SubtractAndMultiplyWorkComponentByComponentInFloat)
{
    QVColorVector vector(0.1f, 0.2f, 0.3f, QVMeasureConditions());
    const QVColorVector other(0.7f, 0.11f, 3.0f, Conditions("ColorSpaceDescription.Type", "CIEXYZ"));
    vector -= other;
    EXPECT_EQ(0.1f - 0.7f, vector[0]);
    EXPECT_EQ(0.2f - 0.11f, vector[1]);
    EXPECT_EQ(0.3f - 3.0f, vector[2]);
    vector *= other;
    EXPECT_EQ((0.1f - 0.7f) * 0.7f, vector[0]);
    EXPECT_EQ((0.3f - 3.0f) * 3.0f, vector[2]);
    EXPECT_EQ("CIELab", Condition(vector, "ColorSpaceDescription.Type"));
}

TEST(QVColorVector, AssignmentCopiesComponentsAndConditions)
{
    QVColorVector source(1.0f, 2.0f, 3.0f, Conditions("ColorSpaceDescription.Type", "RGB"));
    source[3] = 4.0f;
    QVColorVector target;
    target = source;
    EXPECT_TRUE(target == source);
    const QVColorVector& self = target;
    target = self;
    EXPECT_TRUE(target == source);
    const QVColorVector copy(source);
    EXPECT_TRUE(copy == source);
}

TEST(QVColorVector, ConditionsAreACopyOfThoseItWasBuiltFrom)
{
    QVMeasureConditions conditions = Conditions("ColorSpaceDescription.Type", "CIEXYZ");
    const QVColorVector vector(1.0f, 2.0f, 3.0f, conditions);
    conditions.SetMeasureCondition(String("ColorSpaceDescription.Type"), String("CIELab"));
    EXPECT_EQ("CIEXYZ", Condition(vector, "ColorSpaceDescription.Type"));
}

TEST(QVColorVector, SetMeasureConditionsTakesThePhysicalFilterOfTheFirstArgument)
{
    QVColorVector vector;
    const QVMeasureConditions physical = Conditions("Physical.Filter", "Polarizer");
    QVMeasureConditions evaluation = Conditions("ColorSpaceDescription.Type", "CIELCh");
    evaluation.SetMeasureCondition(String("Colorimetric.Observer"), String("TenDegree"));
    evaluation.SetMeasureCondition(String("Physical.Filter"), String("UVCut"));
    TestAccess::SetMeasureConditions(vector, physical, evaluation);
    EXPECT_EQ("Polarizer", Condition(vector, "Physical.Filter"));
    EXPECT_EQ("CIELCh", Condition(vector, "ColorSpaceDescription.Type"));
    EXPECT_EQ("TenDegree", Condition(vector, "Colorimetric.Observer"));
    EXPECT_EQ("D65", Condition(vector, "Colorimetric.Illumination"));
    TestAccess::SetMeasureConditions(vector, evaluation);
    EXPECT_EQ("UVCut", Condition(vector, "Physical.Filter"));
}

TEST(QVColorVectorForms, NamedFormsCopyTheWholeVector)
{
    QVXYZ xyz;
    xyz[0] = 95.047f;
    TestAccess::SetMeasureConditions(xyz, Conditions("ColorSpaceDescription.Type", "CIEXYZ"));
    const QVXYZ xyzCopy(xyz);
    EXPECT_TRUE(xyzCopy == xyz);
    EXPECT_STREQ("QVXYZ", xyzCopy.GetValueString().c_str());

    QVLab lab;
    lab[1] = -3.0f;
    const QVLab labCopy(lab);
    EXPECT_TRUE(labCopy == lab);

    QVLCh lch;
    lch[2] = 180.0f;
    const QVLCh lchCopy(lch);
    EXPECT_TRUE(lchCopy == lch);

    QVLuv luv;
    luv[0] = 50.0f;
    const QVLuv luvCopy(luv);
    EXPECT_TRUE(luvCopy == luv);
    EXPECT_STREQ("QVLuv", luvCopy.GetValueString().c_str());
}

TEST(QVColorVectorForms, LabTakesAnyVectorAndReturnsItsBase)
{
    const QVColorVector source(10.0f, 20.0f, 30.0f, Conditions("ColorSpaceDescription.Type", "CIEXYZ"));
    QVLab lab;
    QVColorVector& base = (lab = source);
    EXPECT_EQ(&base, static_cast<QVColorVector*>(&lab));
    EXPECT_TRUE(lab == source);
}

TEST(QVColorVectorForms, NamedFormsAddNoData)
{
    static_assert(sizeof(QVXYZ) == sizeof(QVColorVector));
    static_assert(sizeof(QVLab) == sizeof(QVColorVector));
    static_assert(sizeof(QVLCh) == sizeof(QVColorVector));
    static_assert(sizeof(QVLuv) == sizeof(QVColorVector));
    SUCCEED();
}

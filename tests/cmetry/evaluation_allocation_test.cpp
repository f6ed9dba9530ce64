// A condition set costs no heap allocation until a custom condition is
// written, so an evaluation under unchanged conditions allocates nothing.

#include "qvimanager/cmetry/calculator.h"

#include "tests/support/allocation_counter.h"

#include <gtest/gtest.h>

using CMetry::CMetryCalculator;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using TestSupport::allocations;
using Utilities::String;

TEST(EvaluationAllocation, ConditionSetsAllocateNothingUntilACustomConditionIsWritten)
{
    const unsigned long before = allocations;
    QVMeasureConditions conditions;
    QVMeasureConditions copy(conditions);
    copy = conditions;
    EXPECT_TRUE(copy == conditions);
    EXPECT_EQ(before, allocations);
    copy.SetMeasureCondition(String("CustomCondition"), String("Enable"));
    EXPECT_LT(before, allocations);
    EXPECT_STREQ("Enable", copy.GetMeasureCondition(String("CustomCondition")).GetCharPointer());
}

TEST(EvaluationAllocation, LabOfASpectrumUnderUnchangedConditionsAllocatesNothing)
{
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = 0.5f;
    }
    const QVSpectrum spectrum(values);
    const QVMeasureConditions conditions;
    QVColorVector lab;
    ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(spectrum, conditions, lab));
    const unsigned long before = allocations;
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(CMetryCalculator::GetVector_CIELab(spectrum, conditions, lab));
    }
    EXPECT_EQ(before, allocations);
}

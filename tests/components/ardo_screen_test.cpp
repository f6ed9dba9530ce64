// The RGB conversion through an installed "ArdoCMMScreen": its answer is
// taken, and a screen that throws leaves the built-in table to answer.

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/components/naming_service.h"
#include "tests/components/load_test_plugin.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using CMetry::CMetryCalculator;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using Utilities::String;

QVColorVector Lab()
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String("D65"));
    conditions.SetMeasureCondition(String("ColorSpaceDescription.Type"), String("CIELab"));
    return QVColorVector(50.0f, 20.0f, -30.0f, conditions);
}

QVColorVector ToRGB(const QVColorVector& lab)
{
    QVColorVector rgb;
    EXPECT_TRUE(CMetryCalculator::GetVector_CIELab_RGB(lab, rgb));
    return rgb;
}

std::string Space(const QVColorVector& vector)
{
    return vector.GetMeasureConditions().GetMeasureCondition(String("ColorSpaceDescription.Type")).GetCharPointer();
}

TEST(ArdoCMMScreen, InstalledScreenAnswers)
{
    const QVColorVector table = ToRGB(Lab());
    TestPlugins::LoadTestPlugin("ardo_screen_fixed");
    const QVColorVector rgb = ToRGB(Lab());
    EXPECT_EQ(12.0f, rgb[0]);
    EXPECT_EQ(34.0f, rgb[1]);
    EXPECT_EQ(56.0f, rgb[2]);
    EXPECT_EQ("RGB", Space(rgb));
    // Not what the table gives.
    EXPECT_NE(table[0], rgb[0]);
    // The conditions are those of the input, with the colour space RGB.
    EXPECT_STREQ("D65", rgb.GetMeasureConditions()
                            .GetMeasureCondition(String("Colorimetric.Illumination"))
                            .GetCharPointer());
}

TEST(ArdoCMMScreen, ScreenThatThrowsLeavesTheTableToAnswer)
{
    const QVColorVector table = ToRGB(Lab());
    TestPlugins::LoadTestPlugin("ardo_screen_throwing");
    const QVColorVector rgb = ToRGB(Lab());
    for (short axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(table[axis], rgb[axis]);
    }
    EXPECT_EQ("RGB", Space(rgb));
}

} // namespace

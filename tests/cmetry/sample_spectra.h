#ifndef QVIMANAGER_TESTS_CMETRY_SAMPLE_SPECTRA_H
#define QVIMANAGER_TESTS_CMETRY_SAMPLE_SPECTRA_H

// Reflectance curves the calculation tests share, as 36 values from 380 to
// 730 nm, and a fixture that starts and ends a test without a paper white.

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/spectrum.h"

#include "tests/cmetry/test_access.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>

namespace TestSpectra {

using Values = std::array<float, 36>;

// Low up to 570 nm, then high: a red.
inline Values Reddish()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = i < 20 ? 0.05f + 0.004f * static_cast<float>(i) : 0.8f;
    }
    return values;
}

// Falling from 0.7 at 380 nm.
inline Values Bluish()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = 0.7f - 0.018f * static_cast<float>(i);
    }
    return values;
}

inline Values Scaled(const Values& values, float factor)
{
    Values scaled{};
    for (std::size_t i = 0; i < 36; ++i) {
        scaled[i] = values[i] * factor;
    }
    return scaled;
}

// A light, slightly rising paper.
inline Values PaperValues()
{
    Values values{};
    for (std::size_t i = 0; i < 36; ++i) {
        values[i] = 0.6f + 0.01f * static_cast<float>(i);
    }
    return values;
}

// Every test built on it starts and ends without a paper white.
class NoPaperWhite : public ::testing::Test {
protected:
    void SetUp() override
    {
        CMetry::TestAccess::SetPaperWhitePointer(Utilities::SmartPointer<CMetry::QVSample>());
    }
    void TearDown() override
    {
        CMetry::TestAccess::SetPaperWhitePointer(Utilities::SmartPointer<CMetry::QVSample>());
    }
};

} // namespace TestSpectra

#endif

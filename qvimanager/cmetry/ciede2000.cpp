#include "qvimanager/cmetry/ciede2000.h"

#include "qvimanager/cmetry/calculator.h"
#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/foundation/string.h"

#include <cmath>
#include <numbers>

using Utilities::String;

namespace CMetry {

namespace {

const String kColorSpaceKey("ColorSpaceDescription.Type");
const String kVectorFormKey("ColorSpaceDescription.AbsoluteOrDeltaVector");

constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;
constexpr double kRadiansPerDegree = std::numbers::pi / 180.0;

struct Lab {
    double L;
    double a;
    double b;
};

void CheckFactor(float factor, const char* name)
{
    if (!(factor > 0.0f) || std::isinf(factor)) {
        String text("DeltaE2000: the parametric factor %KEY% must be finite and greater than 0");
        text.Replace(String("%KEY%"), String(name));
        throw ExceptionCMetry(text);
    }
}

// L*, a*, b* of a CIELab vector, or of a CIEXYZ vector converted against the
// white of its own conditions; any other vector is refused.
Lab ReadLab(const QVColorVector& vector)
{
    const QVMeasureConditions& conditions = vector.GetMeasureConditions();
    if (conditions.GetMeasureCondition(kVectorFormKey) == String("DeltaVector")) {
        throw ExceptionCMetry(String("DeltaE2000 not supported for a DeltaVector"));
    }
    const String space = conditions.GetMeasureCondition(kColorSpaceKey);
    if (space == String("CIELab")) {
        return Lab{vector[0], vector[1], vector[2]};
    }
    if (space == String("CIEXYZ")) {
        // The conversion of XYZ to Lab cannot fail; its own exceptions (of
        // the conditions) pass through.
        QVColorVector lab;
        CMetryCalculator::GetVector_CIELab(vector, lab);
        return Lab{lab[0], lab[1], lab[2]};
    }
    throw ExceptionCMetry(String("DeltaE2000 not supported for ColorSpace ") + space);
}

// sqrt(C^7 / (C^7 + 25^7)), written as sqrt(1 / (1 + (25 / C)^7)): the
// seventh power of a chroma above about 1e44 would overflow a double. For a
// chroma of 0 the weight is 0.
double ChromaWeight(double chroma)
{
    if (chroma == 0.0) {
        return 0.0;
    }
    const double ratio = std::pow(25.0 / chroma, 7.0);
    return std::sqrt(1.0 / (1.0 + ratio));
}

// The hue angle in degrees from 0 to 360; 0 for an achromatic colour, whose
// atan2 would otherwise depend on the signs of its zeros.
double HueDegrees(double b, double aPrime)
{
    if (aPrime == 0.0 && b == 0.0) {
        return 0.0;
    }
    double hue = std::atan2(b, aPrime) * kDegreesPerRadian;
    if (hue < 0.0) {
        hue += 360.0;
    }
    return hue;
}

double Square(double value)
{
    return value * value;
}

} // namespace

float DeltaE2000(const QVColorVector& reference, const QVColorVector& sample, float kL, float kC, float kH)
{
    CheckFactor(kL, "kL");
    CheckFactor(kC, "kC");
    CheckFactor(kH, "kH");
    const Lab first = ReadLab(reference);
    const Lab second = ReadLab(sample);

    // a* corrected by G, from the mean of the two chromas C*.
    const double chroma1 = std::sqrt(Square(first.a) + Square(first.b));
    const double chroma2 = std::sqrt(Square(second.a) + Square(second.b));
    const double meanChroma = (chroma1 + chroma2) / 2.0;
    const double g = 0.5 * (1.0 - ChromaWeight(meanChroma));
    const double aPrime1 = (1.0 + g) * first.a;
    const double aPrime2 = (1.0 + g) * second.a;
    const double chromaPrime1 = std::sqrt(Square(aPrime1) + Square(first.b));
    const double chromaPrime2 = std::sqrt(Square(aPrime2) + Square(second.b));
    const double hue1 = HueDegrees(first.b, aPrime1);
    const double hue2 = HueDegrees(second.b, aPrime2);

    // The differences.
    const double deltaL = second.L - first.L;
    const double deltaC = chromaPrime2 - chromaPrime1;
    const bool achromatic = chromaPrime1 == 0.0 || chromaPrime2 == 0.0;
    double deltaHue = 0.0;
    if (!achromatic) {
        deltaHue = hue2 - hue1;
        if (deltaHue > 180.0) {
            deltaHue -= 360.0;
        } else if (deltaHue < -180.0) {
            deltaHue += 360.0;
        }
    }
    const double deltaH = 2.0 * std::sqrt(chromaPrime1 * chromaPrime2) * std::sin(deltaHue / 2.0 * kRadiansPerDegree);

    // The means.
    const double meanL = (first.L + second.L) / 2.0;
    const double meanChromaPrime = (chromaPrime1 + chromaPrime2) / 2.0;
    const double hueSum = hue1 + hue2;
    double meanHue = hueSum;
    if (!achromatic) {
        if (std::fabs(hue1 - hue2) <= 180.0) {
            meanHue = hueSum / 2.0;
        } else if (hueSum < 360.0) {
            meanHue = (hueSum + 360.0) / 2.0;
        } else {
            meanHue = (hueSum - 360.0) / 2.0;
        }
    }

    // The weighting functions and the rotation term.
    const double t = 1.0 - 0.17 * std::cos((meanHue - 30.0) * kRadiansPerDegree) +
                     0.24 * std::cos((2.0 * meanHue) * kRadiansPerDegree) +
                     0.32 * std::cos((3.0 * meanHue + 6.0) * kRadiansPerDegree) -
                     0.20 * std::cos((4.0 * meanHue - 63.0) * kRadiansPerDegree);
    const double deltaTheta = 30.0 * std::exp(-Square((meanHue - 275.0) / 25.0));
    const double rotationChroma = 2.0 * ChromaWeight(meanChromaPrime);
    const double lightnessOffset = Square(meanL - 50.0);
    const double sl = 1.0 + 0.015 * lightnessOffset / std::sqrt(20.0 + lightnessOffset);
    const double sc = 1.0 + 0.045 * meanChromaPrime;
    const double sh = 1.0 + 0.015 * meanChromaPrime * t;
    const double rt = -std::sin((2.0 * deltaTheta) * kRadiansPerDegree) * rotationChroma;

    const double lightnessTerm = deltaL / (static_cast<double>(kL) * sl);
    const double chromaTerm = deltaC / (static_cast<double>(kC) * sc);
    const double hueTerm = deltaH / (static_cast<double>(kH) * sh);
    return static_cast<float>(std::sqrt(Square(lightnessTerm) + Square(chromaTerm) + Square(hueTerm) +
                                        rt * chromaTerm * hueTerm));
}

} // namespace CMetry

#include "qvimanager/cmetry/calculator.h"

#include "qvimanager/cmetry/ardo_cmm_screen.h"
#include "qvimanager/cmetry/linalg.h"
#include "qvimanager/cmetry/weightfactors.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/containers.h"

#include <cmath>

using Utilities::SmartPointer;
using Utilities::String;

namespace CMetry {

namespace {

const String kColorSpaceKey("ColorSpaceDescription.Type");

// 16 / 116 as a float, written out as the double it widens to.
constexpr double kSixteenOver116 = 0.13793103396892548;
constexpr double kPi = 3.14159265358979323846;

// The current weight factors. Raises ExceptionNullpointer with "Failed to
// access to nullpointer." when there are none.
const Weightfactors& CurrentWeightfactors(const SmartPointer<Weightfactors>& factors)
{
    return *factors.operator->();
}

// 36 values of 1e-5, the neutral surface a black sample is referred to.
QVSpectrum FlatSpectrum(const QVMeasureConditions& conditions)
{
    Utilities::Vector<float> values(100);
    values.SetSize(36);
    for (unsigned long i = 0; i < 36; ++i) {
        values[i] = 1e-5f;
    }
    return QVSpectrum(values, conditions);
}

// The RGB fallback: linear R, G, B on 0 to 1 from X, Y, Z on 0 to 100.
const float kXYZToRGB[9] = {0.03065f, -0.01394f, -0.00476f, -0.00969f, 0.01876f, 0.00042f,
                            0.00068f, -0.00229f, 0.0107f};
float gRGBTable[3][512];
// The table never changes once built; bsLookUpTableCreated stays false as
// it always was, and this flag keeps the table from being built again.
bool gRGBTableBuilt = false;

} // namespace

SmartPointer<QVSample> BaseCalculator::psPaperWhite;
CMetryFilter CMetryCalculator::asXYZFilter;
bool CMetryCalculator::bsLookUpTableCreated = false;

// ---------------------------------------------------------------- BaseCalculator

Diagnostics::String BaseCalculator::GetValueString() const
{
    Diagnostics::String text("Paper white: ");
    if (psPaperWhite.IsValid()) {
        text += psPaperWhite->GetValueString();
    } else {
        text += "not present";
    }
    return text;
}

void BaseCalculator::SetPaperWhite(const QVSample&) {}

void BaseCalculator::AddPaperWhite(const QVSample&) {}

void BaseCalculator::SetPaperWhitePointer(SmartPointer<QVSample> sample)
{
    psPaperWhite = sample;
}

const QVSample& BaseCalculator::GetPaperWhite()
{
    return *psPaperWhite;
}

bool BaseCalculator::IsPaperWhiteValid(const QVMeasureConditions& conditions)
{
    if (!psPaperWhite.IsValid()) {
        return false;
    }
    QVSpectrum white;
    return psPaperWhite->GetSpectrum(conditions, white) && white.IsValid();
}

bool BaseCalculator::GetSpecBasedToPapWhite(QVSpectrum& spectrum)
{
    if (!psPaperWhite.IsValid()) {
        return false;
    }
    QVSpectrum white;
    if (!psPaperWhite->GetSpectrum(spectrum.GetPhysMeasCond(), white)) {
        return false;
    }
    const unsigned short count = spectrum.GetNrOfDataPoints();
    for (unsigned short i = 0; i < count; ++i) {
        spectrum.values[i] /= white.values[i];
    }
    return true;
}

bool BaseCalculator::GetSpecBasedToPapWhite(const QVMeasureConditions& conditions, float* values)
{
    if (!psPaperWhite.IsValid()) {
        return false;
    }
    QVSpectrum white;
    if (!psPaperWhite->GetSpectrum(conditions, white)) {
        return false;
    }
    const unsigned short count = white.GetNrOfDataPoints();
    for (unsigned short i = 0; i < count; ++i) {
        values[i] /= white.values[i];
    }
    return true;
}

// ---------------------------------------------------------------- from spectra

Diagnostics::String CMetryCalculator::GetValueString() const
{
    return Diagnostics::String();
}

bool CMetryCalculator::GetVector_CIEXYZ(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                        QVColorVector& out)
{
    // The spectrum and the conditions are copied only where they change.
    const QVSpectrum* source = &spectrum;
    QVSpectrum based;
    const QVMeasureConditions* evaluation = &conditions;
    QVMeasureConditions emissive;
    if (spectrum.conditions.GetIllumination() == QVIllumination(IlluminationEmission)) {
        // A self-luminous sample: no illuminant, never based on paper.
        emissive = conditions;
        emissive.SetIllumination(QVIllumination(IlluminationEmission));
        evaluation = &emissive;
    } else if (conditions.GetWhiteBase() == WhiteBasePaper) {
        based = spectrum;
        if (!GetSpecBasedToPapWhite(based)) {
            return false;
        }
        source = &based;
    }
    asXYZFilter.SetMeasuringConditions(*evaluation);
    // Read before the output changes: the spectrum may live in the output's
    // own conditions.
    const QVMeasureConditions& physical = spectrum.conditions;
    float components[3];
    const Weightfactors& factors = CurrentWeightfactors(asXYZFilter.weightfactors);
    for (unsigned short axis = 0; axis < 3; ++axis) {
        const float* weight = factors[axis];
        float sum = 0.0f;
        for (unsigned short point = 0; point < QVSpectrum::NumberOfDataPoints; ++point) {
            sum += weight[point] * source->values[point];
        }
        components[axis] = sum;
    }
    out.SetMeasureConditions(physical, *evaluation);
    for (int axis = 0; axis < 3; ++axis) {
        out.components[axis] = components[axis];
    }
    return true;
}

bool CMetryCalculator::GetNormValence(const QVMeasureConditions& conditions, QVColorVector& out)
{
    asXYZFilter.SetMeasuringConditions(conditions);
    const float yScale = asXYZFilter.GetFilterSum(1) / 100.0f;
    float white[3];
    for (unsigned short axis = 0; axis < 3; ++axis) {
        white[axis] = asXYZFilter.GetFilterSum(axis) * yScale;
    }
    out.SetMeasureConditions(QVMeasureConditions(), conditions);
    for (int axis = 0; axis < 3; ++axis) {
        out.components[axis] = white[axis];
    }
    return true;
}

// The chained conversions work in the output itself: each step reads its
// input completely before it writes, a failing first step writes nothing,
// and the intermediate value is overwritten by the final one, so the result
// is that of a separate intermediate vector without its copies.

bool CMetryCalculator::GetVector_CIExyY(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                        QVColorVector& out)
{
    return GetVector_CIEXYZ(spectrum, conditions, out) && GetVector_CIExyY(out, out);
}

bool CMetryCalculator::GetVector_CIELab(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                        QVColorVector& out)
{
    return GetVector_CIEXYZ(spectrum, conditions, out) && GetVector_CIELab(out, out);
}

bool CMetryCalculator::GetVector_CIELCh_ab(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                           QVColorVector& out)
{
    return GetVector_CIELab(spectrum, conditions, out) && GetVector_CIELCh_ab(out, out);
}

bool CMetryCalculator::GetVector_LCHvq(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                       QVColorVector& out)
{
    QVColorVector lch;
    if (!GetVector_CIELCh_ab(spectrum, conditions, lch)) {
        return false;
    }
    const double lightness = lch.components[0];
    const double chroma = lch.components[1];
    const double hue = lch.components[2];

    // Lightness: linear below 16, logarithmic from 16 on.
    double vqLightness = 0.0;
    if (lightness < 16.0) {
        vqLightness = lightness / static_cast<double>(0.511f);
    } else {
        vqLightness = std::log(static_cast<double>(0.040975f) * lightness) / static_cast<double>(0.040975f) +
                      static_cast<double>(0.01765f) * lightness + static_cast<double>(34.7231f);
    }
    // Chroma: the four first constants are double, 5.50671 is single.
    const double vqChroma =
        12.253 * std::log(0.638 + 0.072158 * chroma) + 0.181547 * chroma + static_cast<double>(5.50671f);
    // Hue: a Fourier series in the hue angle, rounded to float at each term.
    static const float kSine[5] = {0.0f, 0.13893f, -0.0539f, -0.04029f, -0.01043f};
    static const float kCosine[5] = {0.0f, -0.09622f, -0.06742f, -0.02137f, 0.00587f};
    const auto radians = static_cast<float>(hue * kPi / 180.0);
    float vqHue = 0.17914f + radians;
    for (int n = 1; n <= 4; ++n) {
        vqHue = static_cast<float>(vqHue + static_cast<double>(kSine[n]) * std::sin(n * static_cast<double>(radians)) +
                                   static_cast<double>(kCosine[n]) * std::cos(n * static_cast<double>(radians)));
    }
    const double vqHueDegrees = vqHue * 180.0 / kPi;

    out.SetMeasureConditions(lch.conditions);
    out.components[0] = static_cast<float>(vqLightness);
    out.components[1] = static_cast<float>(vqChroma);
    out.components[2] = static_cast<float>(vqHueDegrees);
    return true;
}

bool CMetryCalculator::GetVector_LABvq(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                       QVColorVector& out)
{
    QVColorVector lch;
    if (!GetVector_LCHvq(spectrum, conditions, lch)) {
        return false;
    }
    const double chroma = lch.components[1];
    const double angle = lch.components[2] * kPi / 180.0;
    out.SetMeasureConditions(lch.conditions);
    out.components[0] = lch.components[0];
    out.components[1] = static_cast<float>(chroma * std::cos(angle));
    out.components[2] = static_cast<float>(chroma * std::sin(angle));
    return true;
}

bool CMetryCalculator::GetVector_CIELuv(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                        QVColorVector& out)
{
    QVColorVector xyz;
    QVColorVector lab;
    if (!GetVector_CIEXYZ(spectrum, conditions, xyz) || !GetVector_CIELab(xyz, lab)) {
        return false;
    }
    const float lightness = lab.components[0];
    double x = xyz.components[0];
    double y = xyz.components[1];
    double denominator = x + 15.0 * y + 3.0 * xyz.components[2];
    if (denominator == 0.0) {
        // No chromaticity: that of a neutral surface under the same light.
        QVColorVector flatXYZ;
        QVColorVector flatLab;
        if (!GetVector_CIEXYZ(FlatSpectrum(xyz.conditions), conditions, flatXYZ) ||
            !GetVector_CIELab(flatXYZ, flatLab)) {
            return false;
        }
        x = flatXYZ.components[0];
        y = flatXYZ.components[1];
        denominator = x + 15.0 * y + 3.0 * flatXYZ.components[2];
    }
    out.SetMeasureConditions(xyz.conditions);
    out.components[0] = lightness;
    out.components[1] = static_cast<float>(4.0 * x / denominator);
    out.components[2] = static_cast<float>(9.0 * y / denominator);
    return true;
}

bool CMetryCalculator::GetVector_CIELCh_uv(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                           QVColorVector& out)
{
    QVColorVector luv;
    if (!GetVector_CIELuv(spectrum, conditions, luv)) {
        return false;
    }
    return GetVector_CIELCh_ab(luv, out);
}

bool CMetryCalculator::GetVector_HunterLab(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                           QVColorVector& out)
{
    QVColorVector xyz;
    if (!GetVector_CIEXYZ(spectrum, conditions, xyz)) {
        return false;
    }
    QVColorVector white;
    GetNormValence(conditions, white);
    const double x = xyz.components[0];
    const double y = xyz.components[1];
    const double z = xyz.components[2];
    auto root = static_cast<float>(std::sqrt(y));
    if (root < 0.0001) {
        root = 1e-4f;
    }
    const double q = root;
    out.SetMeasureConditions(xyz.conditions);
    out.components[0] = static_cast<float>(10.0 * q);
    out.components[1] = static_cast<float>((100.0 / white.components[0] * x - y) * 17.5 / q);
    out.components[2] = static_cast<float>((y - 100.0 / white.components[2] * z) * 7.0 / q);
    return true;
}

bool CMetryCalculator::GetVector_RxRyRz(const QVSpectrum& spectrum, const QVMeasureConditions& conditions,
                                        QVColorVector& out)
{
    QVColorVector xyz;
    if (!GetVector_CIEXYZ(spectrum, conditions, xyz)) {
        return false;
    }
    QVColorVector white;
    GetNormValence(conditions, white);
    // The short-wavelength lobe of x-bar: the first 13 points, 380 to 500 nm.
    const float* xWeights = CurrentWeightfactors(asXYZFilter.weightfactors)[0];
    float lobe = 0.0f;
    for (int point = 0; point < 13; ++point) {
        lobe += xWeights[point];
    }
    const double t = lobe / 100.0;
    const double u = white.components[0] / 100.0 - t;
    const double zWhite = white.components[2] / 100.0;
    const double x = xyz.components[0];
    const double z = xyz.components[2];
    out.SetMeasureConditions(xyz.conditions);
    out.components[0] = static_cast<float>(x / u - (t * z) / (u * zWhite));
    out.components[1] = xyz.components[1];
    out.components[2] = static_cast<float>(z / zWhite);
    return true;
}

bool CMetryCalculator::GetVector_RGB(const QVSpectrum& spectrum, QVColorVector& out)
{
    QVMeasureConditions conditions(out.conditions);
    conditions.SetMeasureCondition(kColorSpaceKey, String("CIELab"));
    QVColorVector lab;
    if (!GetVector_CIELab(spectrum, conditions, lab)) {
        return false;
    }
    return GetVector_CIELab_RGB(lab, out);
}

// ---------------------------------------------------------------- from vectors

bool CMetryCalculator::GetVector_CIEXYZ(const QVColorVector& lab, QVColorVector& out)
{
    asXYZFilter.SetMeasuringConditions(lab.conditions);
    const double fy = (lab.components[0] + 16.0) / 116.0;
    const double f[3] = {lab.components[1] / 500.0 + fy, fy, fy - lab.components[2] / 200.0};
    float xyz[3];
    for (unsigned short axis = 0; axis < 3; ++axis) {
        const double white =
            (static_cast<double>(asXYZFilter.GetFilterSum(axis)) * 100.0) / asXYZFilter.GetFilterSum(1);
        if (f[axis] > 0.206893034423) {
            xyz[axis] = static_cast<float>(std::pow(f[axis], 3) * white);
        } else {
            xyz[axis] = static_cast<float>((f[axis] - kSixteenOver116) * white / static_cast<double>(7.787f));
        }
    }
    out.SetMeasureConditions(lab.conditions);
    for (int axis = 0; axis < 3; ++axis) {
        out.components[axis] = xyz[axis];
    }
    return true;
}

bool CMetryCalculator::GetVector_CIExyY(const QVColorVector& xyz, QVColorVector& out)
{
    double x = xyz.components[0];
    double y = xyz.components[1];
    const float luminance = xyz.components[1];
    double sum = x + y + xyz.components[2];
    if (sum == 0.0) {
        // A black sample takes the chromaticity of a neutral surface; the
        // result of that evaluation is not looked at.
        QVColorVector flat;
        GetVector_CIEXYZ(FlatSpectrum(xyz.conditions), xyz.conditions, flat);
        x = flat.components[0];
        y = flat.components[1];
        sum = x + y + flat.components[2];
    }
    out.SetMeasureConditions(xyz.conditions);
    out.components[0] = static_cast<float>(x / sum);
    out.components[1] = static_cast<float>(y / sum);
    out.components[2] = luminance;
    return true;
}

bool CMetryCalculator::GetVector_CIELab(const QVColorVector& xyz, QVColorVector& out)
{
    asXYZFilter.SetMeasuringConditions(xyz.conditions);
    const float yWhite = asXYZFilter.GetFilterSum(1);
    double f[3];
    for (unsigned short axis = 0; axis < 3; ++axis) {
        const float t = yWhite * xyz.components[axis];
        const auto r = static_cast<float>(static_cast<double>(t) / asXYZFilter.GetFilterSum(axis) / 100.0);
        if (r > 0.008856) {
            f[axis] = std::pow(static_cast<double>(r), 1.0 / 3.0);
        } else {
            f[axis] = static_cast<double>(7.787f) * r + kSixteenOver116;
        }
    }
    double lightness = 116.0 * f[1] - 16.0;
    if (lightness < 0.0) {
        lightness = 0.0;
    }
    out.SetMeasureConditions(xyz.conditions);
    out.components[0] = static_cast<float>(lightness);
    out.components[1] = static_cast<float>((f[0] - f[1]) * 500.0);
    out.components[2] = static_cast<float>((f[1] - f[2]) * 200.0);
    return true;
}

bool CMetryCalculator::GetVector_CIELCh_ab(const QVColorVector& rectangular, QVColorVector& out)
{
    const float first = rectangular.components[0];
    const double c1 = rectangular.components[1];
    const double c2 = rectangular.components[2];
    const double chroma = std::sqrt(c1 * c1 + c2 * c2);
    float hue = 360.0f;
    // 1e-5 as a float, compared in double.
    if (!(std::fabs(c1) < 9.999999747378752e-06 && std::fabs(c2) < 9.999999747378752e-06)) {
        hue = static_cast<float>(std::atan2(c2, c1) * 57.29577951308232);
        if (hue <= 0.0f) {
            hue += 360.0f;
        }
    }
    out.SetMeasureConditions(rectangular.conditions);
    out.components[0] = first;
    out.components[1] = static_cast<float>(chroma);
    out.components[2] = hue;
    return true;
}

bool CMetryCalculator::GetVector_CIEuvY1976(const QVColorVector& in, QVColorVector& out)
{
    const String space = in.conditions.GetMeasureCondition(kColorSpaceKey);
    const bool fromXYZ = space == String("CIEXYZ");
    if (!fromXYZ && !(space == String("CIExyY"))) {
        return false;
    }
    QVMeasureConditions conditions(in.conditions);
    conditions.SetMeasureCondition(kColorSpaceKey, String("CIEuvY1976"));
    // The chromaticity of equal energy, 4/19 and 9/19 as floats.
    float u = 0.21052632f;
    float v = 0.47368422f;
    const float luminance = in.components[fromXYZ ? 1 : 2];
    if (fromXYZ) {
        const double sum = static_cast<double>(in.components[0]) + in.components[1] + in.components[2];
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        if (sum != 0.0) {
            x = in.components[0] / sum;
            y = in.components[1] / sum;
            z = in.components[2] / sum;
        }
        const double denominator = x + 15.0 * y + 3.0 * z;
        if (denominator != 0.0) {
            u = static_cast<float>(4.0 * x / denominator);
            v = static_cast<float>(9.0 * y / denominator);
        }
    } else if (in.components[2] != 0.0f) {
        const double x = in.components[0];
        const double y = in.components[1];
        const double denominator = -2.0 * x + 12.0 * y + 3.0;
        u = static_cast<float>(4.0 * x / denominator);
        v = static_cast<float>(9.0 * y / denominator);
    }
    out.SetMeasureConditions(conditions);
    out.components[0] = u;
    out.components[1] = v;
    out.components[2] = luminance;
    return true;
}

bool CMetryCalculator::GetVector_CIEuvY1960(const QVColorVector& in, QVColorVector& out)
{
    QVMeasureConditions conditions(in.conditions);
    if (!GetVector_CIEuvY1976(in, out)) {
        return false;
    }
    conditions.SetMeasureCondition(kColorSpaceKey, String("CIEuvY1960"));
    out.components[1] = (out.components[1] + out.components[1]) / 3.0f;
    out.SetMeasureConditions(conditions);
    return true;
}

bool CMetryCalculator::DeltaLCH(const QVColorVector& first, const QVColorVector& second, bool firstChromaInDouble,
                                QVColorVector& out)
{
    QVColorVector difference(first);
    difference -= second;
    const double f1 = first.components[1];
    const double f2 = first.components[2];
    const double s1 = second.components[1];
    const double s2 = second.components[2];
    double c1 = std::sqrt(f1 * f1 + f2 * f2);
    if (!firstChromaInDouble) {
        c1 = static_cast<float>(c1);
    }
    const auto c2 = static_cast<float>(std::sqrt(s1 * s1 + s2 * s2));
    const float deltaL = difference.components[0];
    const auto deltaC = static_cast<float>(c1 - c2);
    const double length = difference.Length();
    // fabs keeps rounding from asking for the root of a negative number.
    auto deltaH = static_cast<float>(std::sqrt(
        std::fabs(length * length - static_cast<double>(deltaL) * deltaL - static_cast<double>(deltaC) * deltaC)));
    if (f1 * s2 - s1 * f2 > 0.0) {
        deltaH = -deltaH;
    }
    out.SetMeasureConditions(first.conditions);
    out.components[0] = deltaL;
    out.components[1] = deltaC;
    out.components[2] = deltaH;
    return true;
}

bool CMetryCalculator::GetVector_DeltaCIELCH_ab(const QVColorVector& first, const QVColorVector& second,
                                                QVColorVector& out)
{
    return DeltaLCH(first, second, true, out);
}

bool CMetryCalculator::GetVector_LCHvq_delta(const QVColorVector& first, const QVColorVector& second,
                                             QVColorVector& out)
{
    return DeltaLCH(first, second, false, out);
}

bool CMetryCalculator::GetVector_CIELCH_uv(const QVColorVector& first, const QVColorVector& second,
                                           QVColorVector& out)
{
    return DeltaLCH(first, second, false, out);
}

bool CMetryCalculator::GetVector_CIELab_RGB(const QVColorVector& lab, QVColorVector& out)
{
    bool ok = false;
    QVMeasureConditions conditions(lab.conditions);
    conditions.SetPhysMeasCond(lab.conditions);
    conditions.SetMeasureCondition(kColorSpaceKey, String("RGB"));
    SmartPointer<ArdoCMMScreen> screen = Utilities::Resolve<ArdoCMMScreen>(String("ArdoCMMScreen"));
    if (screen.IsValid()) {
        try {
            out = screen->ConvertLabToRGB(lab);
            out.SetMeasureConditions(conditions);
            ok = true;
        } catch (...) {
            // A faulty component falls through to the built-in table.
        }
    }
    if (!ok) {
        if (!bsLookUpTableCreated && !gRGBTableBuilt) {
            CreateLookupTableRGB();
            gRGBTableBuilt = true;
        }
        QVColorVector xyz;
        xyz.conditions.SetMeasureCondition(kColorSpaceKey, String("CIEXYZ"));
        ok = GetVector_CIEXYZ(lab, xyz);
        if (ok) {
            float linear[3];
            LinAlg::MxV(linear, kXYZToRGB, xyz.components, 3, 3, 3);
            float rgb[3];
            LookupRGB(rgb, linear);
            for (int axis = 0; axis < 3; ++axis) {
                out.components[axis] = rgb[axis];
            }
            out.conditions.SetMeasureCondition(kColorSpaceKey, String("RGB"));
        }
    }
    return ok;
}

// ---------------------------------------------------------------- RGB table

void CreateLookupTableRGB()
{
    const double exponent = 1.0 / static_cast<double>(0.45f);
    for (auto& channel : gRGBTable) {
        channel[0] = 0.0f;
        float level = 0.0f;
        for (int i = 1; i < 512; ++i) {
            level += 0.5f;
            channel[i] = static_cast<float>(std::pow(static_cast<double>(level / 255.0f), exponent));
        }
    }
}

int SearchRGB(float value, const float* table, int size)
{
    int low = 0;
    int middle = size / 2;
    int high = size - 1;
    while (low != middle) {
        if (value < table[middle]) {
            high = middle;
        } else {
            low = middle;
        }
        middle = low + (high - low) / 2;
    }
    return value < table[low] ? low - 1 : low;
}

void LookupRGB(float* out, const float* in)
{
    for (int channel = 0; channel < 3; ++channel) {
        out[channel] = static_cast<float>(SearchRGB(in[channel], gRGBTable[channel], 512) / 2);
    }
}

} // namespace CMetry

#include "qvimanager/cmetry/calculator.h"

#include "qvimanager/cmetry/ardo_cmm_screen.h"
#include "qvimanager/cmetry/linalg.h"
#include "qvimanager/cmetry/weightfactors.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/containers.h"

#include <cmath>
#include <optional>

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
    // The spectrum and the conditions are copied only where they change, and
    // only then constructed: the common call (reflectance, absolute or
    // automatic white base) builds no temporary value at all.
    const QVSpectrum* source = &spectrum;
    std::optional<QVSpectrum> based;
    const QVMeasureConditions* evaluation = &conditions;
    std::optional<QVMeasureConditions> emissive;
    if (spectrum.conditions.illumination == QVIllumination(IlluminationEmission)) {
        // A self-luminous sample: no illuminant, never based on paper.
        emissive.emplace(conditions);
        emissive->SetIllumination(QVIllumination(IlluminationEmission));
        evaluation = &*emissive;
    } else if (conditions.GetWhiteBase() == WhiteBasePaper) {
        based.emplace(spectrum);
        if (!GetSpecBasedToPapWhite(*based)) {
            return false;
        }
        source = &*based;
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

// ---------------------------------------------------------------- differences

namespace {

// The length of first - second over all four components, as
// QVColorVector::operator-= and Length compute it.
float DifferenceLength(const QVColorVector& first, const QVColorVector& second)
{
    QVColorVector difference(first);
    difference -= second;
    return difference.Length();
}

using SpectrumConversion = bool (*)(const QVSpectrum&, const QVMeasureConditions&, QVColorVector&);

// The Euclidean difference of the two spectra in the space of `convert`, or
// the failure value.
float EuclideanDifference(SpectrumConversion convert, const QVSpectrum& first, const QVSpectrum& second,
                          const QVMeasureConditions& conditions)
{
    QVColorVector a;
    QVColorVector b;
    if (!convert(first, conditions, a) || !convert(second, conditions, b)) {
        return CMetryCalculator::FailedDifference;
    }
    return DifferenceLength(a, b);
}

} // namespace

float CMetryCalculator::GetDeltaE_CIELAB(const QVSpectrum& first, const QVSpectrum& second,
                                         const QVMeasureConditions& conditions)
{
    return EuclideanDifference(&CMetryCalculator::GetVector_CIELab, first, second, conditions);
}

float CMetryCalculator::GetDeltaE_CIELAB(const QVLab& first, const QVLab& second)
{
    return DifferenceLength(first, second);
}

float CMetryCalculator::GetDeltaE_CIELAB_SpeedOptimized(const QVLab& reference, const float* spectrum)
{
    const float* values = spectrum;
    float based[QVSpectrum::NumberOfDataPoints];
    if (reference.conditions.GetWhiteBase() == WhiteBasePaper) {
        LinAlg::CopyVector(based, spectrum, QVSpectrum::NumberOfDataPoints);
        GetSpecBasedToPapWhite(reference.conditions, based);
        values = based;
    }
    const Weightfactors& factors = CurrentWeightfactors(asXYZFilter.weightfactors);
    const float yWhite = asXYZFilter.GetFilterSum(1);
    double f[3];
    for (unsigned short axis = 0; axis < 3; ++axis) {
        const float tristimulus = LinAlg::DotProd(factors[axis], values, QVSpectrum::NumberOfDataPoints);
        const float scaled = yWhite * tristimulus;
        const auto r = static_cast<float>(static_cast<double>(scaled) / asXYZFilter.GetFilterSum(axis) / 100.0);
        // Both constants of the linear branch in double here.
        f[axis] = r > 0.008856 ? std::pow(static_cast<double>(r), 1.0 / 3.0) : 7.787 * r + 0.13793103448275862;
    }
    const float lab[4] = {static_cast<float>(116.0 * f[1] - 16.0), static_cast<float>((f[0] - f[1]) * 500.0),
                          static_cast<float>((f[1] - f[2]) * 200.0), 0.0f};
    float sumOfSquares = 0.0f;
    for (int axis = 0; axis < 4; ++axis) {
        const float difference = lab[axis] - reference.components[axis];
        sumOfSquares += difference * difference;
    }
    return static_cast<float>(std::sqrt(static_cast<double>(sumOfSquares)));
}

float CMetryCalculator::GetDeltaE_CIELUV(const QVSpectrum& first, const QVSpectrum& second,
                                         const QVMeasureConditions& conditions)
{
    return EuclideanDifference(&CMetryCalculator::GetVector_CIELuv, first, second, conditions);
}

float CMetryCalculator::GetDeltaE_vq(const QVSpectrum& first, const QVSpectrum& second,
                                     const QVMeasureConditions& conditions)
{
    return EuclideanDifference(&CMetryCalculator::GetVector_LABvq, first, second, conditions);
}

float CMetryCalculator::GetDeltaE_FMCII(const QVSpectrum& first, const QVSpectrum& second,
                                        const QVMeasureConditions& conditions)
{
    QVColorVector xyz1;
    QVColorVector xyz2;
    if (!GetVector_CIEXYZ(first, conditions, xyz1) || !GetVector_CIEXYZ(second, conditions, xyz2)) {
        return FailedDifference;
    }
    // Every named value is rounded to float when it is stored.
    const float y1 = xyz1.components[1];
    const float z1 = xyz1.components[2];
    const auto y2 = static_cast<float>(static_cast<double>(y1) * y1);
    const auto y3 = static_cast<float>(static_cast<double>(y2) * y1);
    const auto y4 = static_cast<float>(static_cast<double>(y3) * y1);
    // 0.55669 as a float, widened; the other constants are double.
    const auto k1 = static_cast<float>(0.556689977645874 + 0.049434 * y1 - 0.00082575 * y2 + 7.9172e-06 * y3 -
                                       3.0087e-08 * y4);
    const auto k2 =
        static_cast<float>(0.17548 + 0.027556 * y1 - 0.00057262 * y2 + 6.3893e-06 * y3 - 2.6731e-08 * y4);
    const auto p = [](const QVColorVector& v) {
        return static_cast<float>(0.724 * v.components[0] + 0.382 * v.components[1] - 0.098 * v.components[2]);
    };
    const auto q = [](const QVColorVector& v) {
        return static_cast<float>(-0.48 * v.components[0] + 1.37 * v.components[1] + 0.1276 * v.components[2]);
    };
    const auto s = [](const QVColorVector& v) { return static_cast<float>(0.686 * v.components[2]); };
    const float p1 = p(xyz1);
    const float q1 = q(xyz1);
    const float s1 = s(xyz1);
    const auto dP = static_cast<float>(static_cast<double>(p(xyz2)) - p1);
    const auto dQ = static_cast<float>(static_cast<double>(q(xyz2)) - q1);
    const auto dS = static_cast<float>(static_cast<double>(s(xyz2)) - s1);
    const auto pp = static_cast<float>(static_cast<double>(p1) * p1);
    const auto qq = static_cast<float>(static_cast<double>(q1) * q1);
    const auto p4 = static_cast<float>(static_cast<double>(pp) * pp);
    const auto q4 = static_cast<float>(static_cast<double>(qq) * qq);
    const auto n = static_cast<float>(static_cast<double>(pp) + qq);
    if (!(n > 0.0f)) {
        return FailedDifference;
    }
    if (!(y1 > 0.0f) && !(z1 > 0.0f)) {
        return FailedDifference;
    }
    const auto a2 = static_cast<float>(1.73e-05 * n / (1.0 + 2.73 * pp * qq / (static_cast<double>(p4) + q4)));
    const auto b2 = static_cast<float>(0.0003098 * (static_cast<double>(s1) * s1 + 0.2015 * y2));
    const auto u = static_cast<float>(static_cast<double>(q1) * dP - static_cast<double>(p1) * dQ);
    const auto v = static_cast<float>(static_cast<double>(p1) * dP + static_cast<double>(q1) * dQ);
    const auto t1 = static_cast<float>(static_cast<double>(u) * u / (static_cast<double>(a2) * n));
    const double chromaticTerm = static_cast<double>(s1) * v / n - dS;
    const auto t2 = static_cast<float>(chromaticTerm * chromaticTerm / b2);
    const auto t3 = static_cast<float>(static_cast<double>(k2) * k2 * static_cast<double>(0.077841f) * v * v /
                                       (static_cast<double>(a2) * n));
    return static_cast<float>(std::sqrt(static_cast<double>(k1) * k1 * (static_cast<double>(t1) + t2) + t3));
}

float CMetryCalculator::GetDeltaE_CMC(const QVSpectrum& first, const QVSpectrum& second,
                                      const QVMeasureConditions& conditions, float l, float c)
{
    QVColorVector lab1;
    QVColorVector lch1;
    QVColorVector lab2;
    QVColorVector delta;
    if (!GetVector_CIELab(first, conditions, lab1) || !GetVector_CIELCh_ab(lab1, lch1) ||
        !GetVector_CIELab(second, conditions, lab2) || !GetVector_DeltaCIELCH_ab(lab1, lab2, delta)) {
        return FailedDifference;
    }
    const double lightness = lch1.components[0];
    const float chroma = lch1.components[1];
    const double hue = lch1.components[2];
    // Strictly above 16; the constants are single precision.
    const double sl = lightness > 16.0 ? static_cast<double>(0.040975f) * lightness /
                                             (1.0 + static_cast<double>(0.01765f) * lightness)
                                       : static_cast<double>(0.511f);
    const double sc = static_cast<double>(0.0638f) * chroma / (1.0 + static_cast<double>(0.0131f) * chroma) +
                      static_cast<double>(0.638f);
    const float chroma2 = chroma * chroma;
    const float chroma4 = chroma2 * chroma2;
    const double f = std::sqrt(static_cast<double>(chroma4) / (static_cast<double>(chroma4) + 1900.0));
    // 164 and 345 belong to the first branch. 0.2 and 0.4 are floats widened.
    double t = 0.0;
    if (hue >= 164.0 && hue <= 345.0) {
        t = 0.56 + std::fabs(static_cast<double>(0.2f) * std::cos(2.0 * (168.0 + hue) * kPi / 360.0));
    } else {
        t = 0.36 + std::fabs(static_cast<double>(0.4f) * std::cos(2.0 * (35.0 + hue) * kPi / 360.0));
    }
    const double sh = (f * t + 1.0 - f) * sc;
    const auto lightnessTerm = static_cast<float>(delta.components[0] / (l * sl));
    const auto chromaTerm = static_cast<float>(delta.components[1] / (c * sc));
    const auto hueTerm = static_cast<float>(delta.components[2] / sh);
    return static_cast<float>(std::sqrt(static_cast<double>(lightnessTerm) * lightnessTerm +
                                        static_cast<double>(chromaTerm) * chromaTerm +
                                        static_cast<double>(hueTerm) * hueTerm));
}

float CMetryCalculator::GetDeltaE_94(const QVSpectrum& first, const QVSpectrum& second,
                                     const QVMeasureConditions& conditions, float kL, float kC, float kH)
{
    QVLab lab1;
    QVLab lab2;
    if (!GetVector_CIELab(first, conditions, lab1) || !GetVector_CIELab(second, conditions, lab2)) {
        return FailedDifference;
    }
    return GetDeltaE_94(lab1, lab2, kL, kC, kH);
}

float CMetryCalculator::GetDeltaE_94(const QVLab& first, const QVLab& second, float kL, float kC, float kH)
{
    if (kL == 0.0f || kC == 0.0f || kH == 0.0f) {
        return FailedDifference;
    }
    QVColorVector lch1;
    QVColorVector delta;
    if (!GetVector_CIELCh_ab(first, lch1) || !GetVector_DeltaCIELCH_ab(first, second, delta)) {
        return FailedDifference;
    }
    const double chroma = lch1.components[1];
    const double sl = 1.0;
    const double sc = 1.0 + static_cast<double>(0.045f) * chroma;
    const double sh = 1.0 + static_cast<double>(0.015f) * chroma;
    return static_cast<float>(std::sqrt(std::pow(delta.components[0] / (kL * sl), 2) +
                                        std::pow(delta.components[1] / (kC * sc), 2) +
                                        std::pow(delta.components[2] / (kH * sh), 2)));
}

float CMetryCalculator::GetMetamery(const QVSpectrum& first, const QVSpectrum& second,
                                    const QVMeasureConditions& conditions, const QVIllumination& illumination)
{
    QVMeasureConditions underSecondIlluminant(conditions);
    underSecondIlluminant.SetIllumination(illumination);
    QVColorVector a1;
    QVColorVector a2;
    if (!GetVector_CIEXYZ(first, conditions, a1) || !GetVector_CIEXYZ(second, conditions, a2)) {
        return FailedDifference;
    }
    // Scale the second sample to match the first under the first illuminant.
    QVColorVector correction;
    for (int axis = 0; axis < 3; ++axis) {
        correction.components[axis] =
            a2.components[axis] != 0.0f ? a1.components[axis] / a2.components[axis] : 1.0f;
    }
    QVColorVector b1;
    QVColorVector b2;
    if (!GetVector_CIEXYZ(first, underSecondIlluminant, b1) || !GetVector_CIEXYZ(second, underSecondIlluminant, b2)) {
        return FailedDifference;
    }
    b2 *= correction;
    QVLab lab1;
    QVLab lab2;
    if (!GetVector_CIELab(b1, lab1) || !GetVector_CIELab(b2, lab2)) {
        return FailedDifference;
    }
    return GetDeltaE_CIELAB(lab1, lab2);
}

ColorTYPE CMetryCalculator::GetColorType(const QVSpectrum& spectrum)
{
    QVMeasureConditions conditions(spectrum.conditions);
    conditions.SetPhysMeasCond(spectrum.conditions);
    QVColorVector lab;
    if (!GetVector_CIELab(spectrum, conditions, lab)) {
        return ColorUndefined;
    }
    const float lightness = lab.components[0];
    const double a = lab.components[1];
    const double b = lab.components[2];
    const auto chroma = static_cast<float>(std::sqrt(a * a + b * b));

    // The chroma limit by lightness is computed, then replaced by 1001: only
    // a chroma above 1001 counts as chromatic.
    float limit = lightness <= 75.0f ? 10.0f - (lightness / 75.0f) * 3.0f : 7.0f - 2.0f * (lightness - 75.0f) / 25.0f;
    limit = 1001.0f;

    // The hue in whole degrees.
    const int truncated = a == 0.0 ? 0 : static_cast<int>(std::atan(b / a) * 57.29577951308232);
    int hue = -1;
    if (a > 0.0 && b >= 0.0) {
        hue = truncated;
    } else if (a == 0.0 && b > 0.0) {
        hue = 90;
    } else if (a < 0.0) {
        hue = truncated + 180;
    } else if (a == 0.0 && b < 0.0) {
        hue = 270;
    } else if (a > 0.0 && b < 0.0) {
        hue = truncated + 360;
    }

    if (limit < chroma) {
        const auto in = [hue](int from, int to) { return hue >= from && hue <= to; };
        if (in(300, 334)) {
            return static_cast<ColorTYPE>(1);
        }
        if (in(260, 299)) {
            return ColorBlue;
        }
        if (in(210, 259)) {
            return ColorCyan;
        }
        if (in(175, 209)) {
            return ColorTurquo;
        }
        if (in(135, 174)) {
            return ColorGreen;
        }
        if (in(110, 134)) {
            return chroma < 50.0f && lightness < 50.0f ? ColorOlive : ColorYellowGreen;
        }
        if (in(80, 109)) {
            if (chroma < 50.0f && lightness >= 65.0f) {
                return ColorBeige;
            }
            if (chroma < 70.0f && lightness < 65.0f) {
                return hue >= 90 ? ColorOlive : ColorBrown;
            }
            return ColorYellow;
        }
        if (in(45, 79)) {
            if (chroma < 70.0f) {
                return lightness >= 65.0f ? ColorBeige : ColorBrown;
            }
            return ColorOrange;
        }
        if (in(20, 44)) {
            if (chroma < 40.0f && lightness < 50.0f) {
                return ColorBrown;
            }
            if (chroma < 55.0f && lightness < 65.0f && hue > 35) {
                return ColorBrown;
            }
            return ColorRed;
        }
        return ColorMagenta;
    }
    if (lightness > 80.0f && lightness <= 100.0f) {
        return ColorWhite;
    }
    if (lightness > 30.0f && lightness <= 80.0f) {
        return ColorGray;
    }
    if (lightness >= 0.0f && lightness <= 30.0f) {
        return ColorBlack;
    }
    return ColorWhite;
}

} // namespace CMetry

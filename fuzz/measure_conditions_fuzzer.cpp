// QVMeasureConditions::SetMeasureCondition with arbitrary keys and values,
// then the evaluations of the engine on a spectrum under the conditions
// that took: colour values, differences, density, colour temperature and
// Lab back to a spectrum. Refusals are the library's exceptions; anything
// else (a crash, a sanitizer report, an exception outside the tree) is a
// finding. A value that was taken reads back as a text that is taken again
// and reads back the same.
//
// Input: steps of a selector byte and its texts, then 36 bytes of spectrum.

#include "fuzz/fuzz_input.h"
#include "fuzz/string_text.h"

#include "qvimanager/cmetry/cmetry_service.h"
#include "qvimanager/cmetry/color_vector.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/density/density_service.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"

#include <cstdint>
#include <string>

namespace {

using CMetry::CMetryService;
using CMetry::DensityService;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using Fuzz::Text;
using Utilities::String;

const char* const kKeys[] = {
    "Colorimetric.Illumination",
    "Colorimetric.Observer",
    "Colorimetric.WhiteBase",
    "Colorimetric.DensityStandard",
    "Colorimetric.DensityFilterMode",
    "ColorSpaceDescription.Type",
    "ColorSpaceDescription.DeltaEFormula",
    "ColorSpaceDescription.AbsoluteOrDeltaVector",
    "Physical.Filter",
    "Physical.NumberOfDataPointsSpectrum",
    "Physical.WavelengthSpectrumMax",
    "Physical.WavelengthSpectrumMin",
    "CustomCondition",
};
constexpr unsigned kKeyCount = sizeof kKeys / sizeof kKeys[0];

// Sets the condition; true if it was taken.
bool Set(QVMeasureConditions& conditions, const String& key, const String& value)
{
    try {
        conditions.SetMeasureCondition(key, value);
        return true;
    } catch (const Utilities::Exception&) {
        return false;
    }
}

template <typename Function>
void Evaluate(Function function)
{
    try {
        function();
    } catch (const Utilities::Exception&) {
        // A refusal of the library.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::Input input(data, size);
    QVMeasureConditions conditions;
    const unsigned steps = input.Choice(8) + 1;
    for (unsigned step = 0; step < steps && !input.Empty(); ++step) {
        const std::uint8_t selector = input.Byte();
        // A known key, or a text of the input.
        const String key = (selector & 0x80) != 0 ? String(input.Text(40)) : String(kKeys[selector % kKeyCount]);
        // One of the key's supported values, or a text of the input.
        String value;
        const Utilities::Vector<String>& supported = QVMeasureConditions::GetSupportedValues(key);
        if ((selector & 0x40) == 0 && supported.GetSize() > 0) {
            value = supported[input.Byte() % supported.GetSize()];
        } else {
            value = String(input.Text(40));
        }
        if (!Set(conditions, key, value)) {
            continue;
        }
        const String readBack = conditions.GetMeasureCondition(key);
        if (Text(key) == "CustomCondition" || Text(key).rfind("Physical.", 0) == 0 ||
            Text(readBack) == "Undefined") {
            continue;
        }
        QVMeasureConditions again;
        Fuzz::Check(Set(again, key, readBack), "\"" + Text(readBack) + "\", read back for " + Text(key) +
                                                   " after \"" + Text(value) + "\", is refused");
        Fuzz::Check(Text(again.GetMeasureCondition(key)) == Text(readBack),
                    "\"" + Text(readBack) + "\" for " + Text(key) + " does not read back the same");
    }

    // A spectrum from the input: reflectance 0..1.2 in steps of 1/200.
    float values[QVSpectrum::NumberOfDataPoints];
    for (float& value : values) {
        value = static_cast<float>(input.Byte()) / 200.0f;
    }
    float others[QVSpectrum::NumberOfDataPoints];
    for (int i = 0; i < QVSpectrum::NumberOfDataPoints; ++i) {
        others[i] = values[(i * 7 + 3) % QVSpectrum::NumberOfDataPoints];
    }
    const QVSpectrum spectrum(values, conditions);
    const QVSpectrum other(others, conditions);

    Evaluate([&] {
        const QVColorVector vector = CMetryService::GetVector(spectrum, conditions);
        (void)vector.GetValueString();
        Evaluate([&] { (void)CMetryService::GetVector(vector, String("CIELab")); });
        Evaluate([&] { (void)CMetryService::GetVector(vector, String("CIEXYZ")); });
        Evaluate([&] {
            const QVColorVector second = CMetryService::GetVector(other, conditions);
            (void)CMetryService::GetDeltaE(vector, second, 0.0f, 0.0f, 0.0f);
            (void)CMetryService::GetDeltaE(vector, second, 2.0f, 1.0f, 1.0f);
            (void)CMetryService::GetDeltaVector(vector, second);
        });
        Evaluate([&] { (void)CMetryService::GetSpectrum(vector); });
    });
    Evaluate([&] { (void)DensityService::GetDensity(spectrum, conditions); });
    Evaluate([&] { (void)DensityService::GetDensityFilterName(spectrum, conditions); });
    Evaluate([&] { (void)CMetryService::GetColorTemperature(spectrum); });
    Evaluate([&] { (void)CMetryService::GetColorType(spectrum); });
    return 0;
}

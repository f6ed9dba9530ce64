#include <qvimanager/qvimanager.h>

#include <cstdio>
#include <cstring>

int main()
{
    const Utilities::String text("Colorimetric.Illumination");
    try {
        Utilities::String("x").GetLong();
    } catch (const Utilities::ExceptionOutOfBound& failure) {
        const Diagnostics::String value = failure.GetValueString();
        if (std::strcmp(value.c_str(), "Utilities::ExceptionOutOfBound: x is not a valid number.") != 0) {
            std::printf("consumer: unexpected exception text '%s'\n", value.c_str());
            return 1;
        }
        if (text.GetToken(1, '.') != Utilities::String("Illumination")) {
            std::printf("consumer: unexpected token\n");
            return 1;
        }
        Utilities::Map<Utilities::String, Utilities::Anything> descriptor;
        descriptor[Utilities::String("version")] = Utilities::Anything("$Revision: 1.5 $");
        descriptor[Utilities::String("name")] = Utilities::Anything("QVIInstrumentManager");
        descriptor[Utilities::String("category")] = Utilities::Anything(1L);
        const char* const expected[] = {"category", "name", "version"};
        int index = 0;
        for (auto entry = descriptor.Begin(); entry.IsValid(); entry++) {
            if (std::strcmp(entry.GetKey().GetCharPointer(), expected[index++]) != 0) {
                std::printf("consumer: unexpected descriptor order\n");
                return 1;
            }
        }
        // The colour engine through the installed headers and library: a
        // flat 50 % reflector is a light grey.
        float values[36];
        for (float& value : values) {
            value = 0.5f;
        }
        const CMetry::QVMeasureConditions conditions;
        const CMetry::QVColorVector lab =
            CMetry::CMetryService::GetVector(CMetry::QVSpectrum(values, conditions), conditions);
        if (!(lab[0] > 75.0f && lab[0] < 77.0f)) {
            std::printf("consumer: unexpected L* %f\n", static_cast<double>(lab[0]));
            return 1;
        }
        std::printf("consumer: ok\n");
        return 0;
    }
    std::printf("consumer: no exception\n");
    return 1;
}

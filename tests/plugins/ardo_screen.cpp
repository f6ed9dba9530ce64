// Two "ArdoCMMScreen" plug-ins are built from this file: with
// ARDO_SCREEN_THROWS the conversion throws, otherwise it gives the fixed
// RGB value (12, 34, 56) for any Lab value.

#include "qvimanager/cmetry/ardo_cmm_screen.h"
#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/exception.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

class FixedScreen : public CMetry::ArdoCMMScreen {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("ArdoCMMScreen", "$Revision: 1.0 $", "ColorManagement");
    }
    CMetry::QVColorVector ConvertLabToRGB([[maybe_unused]] const CMetry::QVColorVector& lab) override
    {
#ifdef ARDO_SCREEN_THROWS
        throw Utilities::ExceptionCalculationProblem("The screen profile is missing");
#else
        return CMetry::QVColorVector(12.0f, 34.0f, 56.0f, lab.GetMeasureConditions());
#endif
    }
};

Utilities::ComponentCreatorNormal<FixedScreen> creator;

} // namespace

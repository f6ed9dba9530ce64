// A plug-in that never may be unloaded: its creator always counts one live
// instance, so "PluginCanUnloadDll" answers false.

#include "qvimanager/components/component_creator.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::ComponentCreatorBase;
using Utilities::Map;
using Utilities::SmartPointer;
using Utilities::String;

class Pinned : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("Pinned", "$Revision: 1.0 $", "TestPinned");
    }
    String Identify() override
    {
        return String("stays_loaded: pinned");
    }
};

// A creator of its own: it makes plain objects and reports one instance
// for ever.
class PinningCreator : public ComponentCreatorBase {
public:
    PinningCreator()
    {
        Utilities::ComponentFactory::RegisterAtLoad(this);
    }
    Diagnostics::String GetValueString() const override
    {
        return Diagnostics::String("PinningCreator");
    }
    Map<String, Anything> GetDescriptor() const override
    {
        return Pinned::GetDescriptor();
    }
    void CreateComponent(SmartPointer<Utilities::Component>* out) override
    {
        *out = SmartPointer<Utilities::Component>(new Pinned());
    }
    unsigned long DecrementInstanceCounter() override
    {
        return 1;
    }
    unsigned long GetInstanceCount() const override
    {
        return 1;
    }
    bool PrepareForUnload() override
    {
        return false;
    }
};

PinningCreator creator;

} // namespace

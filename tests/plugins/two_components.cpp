// A plug-in with two components: a normal one and a singleton.

#include "qvimanager/components/component_creator.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

long timesPrepared = 0;
long lampsAlive = 0;
long lampsAliveWhenPrepared = -1;

// What both components share: they count the requests to prepare for
// unload, plug-in wide, and note how many lamps were alive then.
class Counting : public TestPlugins::PluginProbe {
public:
    long TimesPrepared() override
    {
        return timesPrepared;
    }
    long OthersAliveWhenPrepared() override
    {
        return lampsAliveWhenPrepared;
    }
    bool PrepareForUnload() override
    {
        ++timesPrepared;
        lampsAliveWhenPrepared = lampsAlive;
        return true;
    }
};

class PluginLamp : public Counting {
public:
    PluginLamp()
    {
        ++lampsAlive;
    }
    PluginLamp(const PluginLamp& other) : Counting(other)
    {
        ++lampsAlive;
    }
    ~PluginLamp() override
    {
        --lampsAlive;
    }
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("PluginLamp", "$Revision: 1.3 $", "TestLight");
    }
    String Identify() override
    {
        return String("two_components: lamp");
    }
};

class PluginClock : public Counting {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("PluginClock", "$Revision: 2.1 $", "TestTime");
    }
    String Identify() override
    {
        return String("two_components: clock");
    }
};

Utilities::ComponentCreatorNormal<PluginLamp> lampCreator;
Utilities::ComponentCreatorSingleton<PluginClock> clockCreator;

} // namespace

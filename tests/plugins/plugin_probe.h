#ifndef QVIMANAGER_TESTS_PLUGINS_PLUGIN_PROBE_H
#define QVIMANAGER_TESTS_PLUGINS_PLUGIN_PROBE_H

// The interface of the test plug-ins' components: shared by the plug-ins
// and the test programs, as a driver's interface is shared by the driver
// and its application. With it, the descriptor helpers of both.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

#include <string>
#include <vector>

namespace TestPlugins {

class PluginProbe : public Utilities::Component {
public:
    // Which plug-in and which component answered, e.g. "two_components:
    // lamp".
    virtual Utilities::String Identify() = 0;
    // How often the components of this plug-in were asked to prepare for
    // unload; 0 for a plug-in that does not count.
    virtual long TimesPrepared()
    {
        return 0;
    }
    // How many other components of this plug-in were alive when it was
    // last asked to prepare for unload; -1 for a plug-in that does not
    // count.
    virtual long OthersAliveWhenPrepared()
    {
        return -1;
    }
};

// A descriptor of the three usual keys.
inline Utilities::Map<Utilities::String, Utilities::Anything> Descriptor(const char* name, const char* version,
                                                                         const char* category)
{
    return Utilities::MakeComponentDescriptor(name, version, category);
}

// The values under `key` of a list of descriptors, in list order.
inline std::vector<std::string> DescriptorValues(
    const Utilities::List<Utilities::Map<Utilities::String, Utilities::Anything>>& descriptors, const char* key)
{
    std::vector<std::string> values;
    for (Utilities::ListIterator<Utilities::Map<Utilities::String, Utilities::Anything>> entry = descriptors.Begin();
         entry.IsValid(); entry++) {
        values.push_back(entry.Current()[Utilities::String(key)].GetString().GetCharPointer());
    }
    return values;
}

} // namespace TestPlugins

#endif

// A plug-in that offers "MutexImplementation" in a newer revision than the
// library's: a real mutex implementation whose mutexes can never be taken.
// Lock returns false at once, whatever the timeout (so also for -1, "wait
// for ever"); Unlock does nothing.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/platform/mutex.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

class RefusingMutexImplementation : public Utilities::MutexImplementation {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("MutexImplementation", "$Revision: 1.9 $", "Multithreading");
    }
    void Initialize(const String&) override {}
    bool Lock(long) override
    {
        return false;
    }
    void Unlock() override {}
};

Utilities::ComponentCreatorNormal<RefusingMutexImplementation> creator;

} // namespace

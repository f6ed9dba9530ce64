// A plug-in that offers "ThreadImplementation" and "MutexImplementation" in
// a newer revision than the library's, with components of other classes:
// whoever asks for the implementations finds none. Built with MUTEX_ONLY,
// it offers the mutex impostor alone.

#include "qvimanager/components/component_creator.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

class ThreadImpostor : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("ThreadImplementation", "$Revision: 1.9 $", "Multithreading");
    }
    String Identify() override
    {
        return String("thread_impostors: thread");
    }
};

class MutexImpostor : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("MutexImplementation", "$Revision: 1.9 $", "Multithreading");
    }
    String Identify() override
    {
        return String("thread_impostors: mutex");
    }
};

#if !defined(MUTEX_ONLY)
Utilities::ComponentCreatorNormal<ThreadImpostor> threadCreator;
#endif
Utilities::ComponentCreatorNormal<MutexImpostor> mutexCreator;

} // namespace

// A plug-in that offers its own "ThreadImplementation", in a higher
// revision than the library's: it runs Run at once, on the caller's
// thread.

#include <qvimanager/components/component_creator.h>
#include <qvimanager/platform/thread.h>

namespace {

class InlineThreads : public Utilities::ThreadImplementation {
public:
    static Utilities::Map<Utilities::String, Utilities::Anything> GetDescriptor()
    {
        return Utilities::MakeComponentDescriptor("ThreadImplementation", "$Revision: 2.0 $", "Multithreading");
    }
    void KillThread(unsigned long) const override {}
    void StartThread(Utilities::Thread* thread) override
    {
        thread->Run();
    }
};

Utilities::ComponentCreatorNormal<InlineThreads> creator;

} // namespace

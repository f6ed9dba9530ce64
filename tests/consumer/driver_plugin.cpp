// A plug-in as a driver writer makes one: components and their creators,
// nothing else.

#include "greeter.h"

#include <qvimanager/components/component_creator.h>

namespace {

class ConsumerGreeter : public Greeter {
public:
    static Utilities::Map<Utilities::String, Utilities::Anything> GetDescriptor()
    {
        Utilities::Map<Utilities::String, Utilities::Anything> descriptor;
        descriptor[Utilities::String("name")] = Utilities::Anything("ConsumerGreeter");
        descriptor[Utilities::String("version")] = Utilities::Anything("$Revision: 1.0 $");
        descriptor[Utilities::String("category")] = Utilities::Anything("Consumer");
        return descriptor;
    }
    Utilities::String Greet(const Utilities::String& whom) override
    {
        return Utilities::String("hello, ") + whom;
    }
};

Utilities::ComponentCreatorNormal<ConsumerGreeter> creator;

} // namespace

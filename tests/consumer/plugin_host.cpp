// Loads the consumer's plug-in with DllLoader and uses its component.

#include "greeter.h"

#include <qvimanager/qvimanager.h>

#include <cstdio>
#include <cstring>

int main()
{
    using Utilities::SmartPointer;
    using Utilities::String;
    try {
        SmartPointer<Utilities::DllLoader> loader = Utilities::DllLoader::NewInstance();
        loader->SetDLLName(String(CONSUMER_PLUGIN));
        if (!loader->IsValidPluginDLL()) {
            std::printf("consumer plugin: %s is not a plug-in\n", CONSUMER_PLUGIN);
            return 1;
        }
        const auto& descriptors = loader->GetComponentDescriptors();
        if (descriptors.GetItemCount() != 1 ||
            descriptors.Begin().Current()[String("name")].GetString() != String("ConsumerGreeter")) {
            std::printf("consumer plugin: unexpected descriptors\n");
            return 1;
        }
        SmartPointer<Utilities::Component> component;
        loader->Resolve(String("ConsumerGreeter"), &component);
        SmartPointer<Greeter> greeter = Utilities::DynamicCast<Greeter>(component);
        if (!greeter.IsValid()) {
            std::printf("consumer plugin: no greeter\n");
            return 1;
        }
        const String greeting = greeter->Greet(String("host"));
        if (std::strcmp(greeting.GetCharPointer(), "hello, host") != 0) {
            std::printf("consumer plugin: unexpected greeting '%s'\n", greeting.GetCharPointer());
            return 1;
        }
    } catch (const Utilities::Exception& failure) {
        std::printf("consumer plugin: %s\n", failure.GetExceptionText().GetCharPointer());
        return 1;
    }
    std::printf("consumer plugin: ok\n");
    return 0;
}

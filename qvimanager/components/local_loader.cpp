#include "qvimanager/components/local_loader.h"

#include "qvimanager/components/component_factory.h"

namespace Utilities {

LocalLoader::~LocalLoader()
{
    ComponentFactory::ReleaseInstance();
}

Diagnostics::String LocalLoader::GetValueString() const
{
    return Diagnostics::String("LocalLoader: the components of the library");
}

const List<Map<String, Anything>>& LocalLoader::GetComponentDescriptors()
{
    return ComponentFactory::Instance()->GetDescriptors();
}

void LocalLoader::Resolve(const String& name, SmartPointer<Component>* out)
{
    ComponentFactory::Instance()->Resolve(name, out);
}

void LocalLoader::PrepareForUnload()
{
    ComponentFactory::Instance()->PrepareForUnload();
}

bool LocalLoader::GetFunctionAdresses()
{
    return true;
}

bool LocalLoader::LoadDLL()
{
    return true;
}

bool LocalLoader::UnloadDLL()
{
    return true;
}

bool LocalLoader::IsDLLLoaded() const
{
    return true;
}

} // namespace Utilities

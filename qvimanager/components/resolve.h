#ifndef QVIMANAGER_COMPONENTS_RESOLVE_H
#define QVIMANAGER_COMPONENTS_RESOLVE_H

// Resolve<T>: what client code calls to get a component.
//
//     SmartPointer<Preferences> preferences = Resolve<Preferences>("Preferences");
//     if (preferences.IsValid()) { ... }
//
// The result is empty, never an exception, for a name that no file offers
// and for a component of another class than T. What the component's
// constructor throws passes through, and so do the naming service's own
// failures (Instance() after the service was released).

#include "qvimanager/components/naming_service.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

// The component `name` as a T, or an empty pointer.
template <typename T>
SmartPointer<T> Resolve(const String& name)
{
    SmartPointer<Component> component;
    NamingService::Instance()->Resolve(name, &component);
    return DynamicCast<T>(component);
}

// The component `name` of the pool `poolName` as a T, or an empty pointer:
// one instance per name and pool, made on the first call.
template <typename T>
SmartPointer<T> Resolve(const String& name, const String& poolName)
{
    SmartPointer<Component> component;
    bool created = false;
    NamingService::Instance()->Resolve(name, poolName, &component, created);
    return DynamicCast<T>(component);
}

} // namespace Utilities

#endif

#ifndef QVIMANAGER_COMPONENTS_LOCAL_LOADER_H
#define QVIMANAGER_COMPONENTS_LOCAL_LOADER_H

// LocalLoader: the loader of the library's own components. It loads and
// binds nothing (it counts as loaded from the start) and answers straight
// from the library's ComponentFactory. Its file name is empty.
//
// Its destructor releases the library's ComponentFactory, and with it the
// registrations of the library's own components for the rest of the
// process: the naming service, which holds the one LocalLoader, must be the
// last user of local components.

#include "qvimanager/components/dll_loader_base.h"

namespace Utilities {

class LocalLoader : public DllLoaderBase {
public:
    LocalLoader() = default;
    // Releases the library's ComponentFactory.
    ~LocalLoader() override;

    // "LocalLoader: the components of the library".
    Diagnostics::String GetValueString() const override;
    void Invariant() const override {}
    // The descriptors of the library's components.
    const List<Map<String, Anything>>& GetComponentDescriptors() override;
    // The library's component `name` into *out; an unknown name leaves
    // *out alone.
    void Resolve(const String& name, SmartPointer<Component>* out) override;
    // Asks the library's components to get ready for unload.
    void PrepareForUnload() override;

protected:
    // All true: there is nothing to load, bind or unload.
    bool GetFunctionAdresses() override;
    bool LoadDLL() override;
    bool UnloadDLL() override;
    bool IsDLLLoaded() const override;
};

} // namespace Utilities

#endif

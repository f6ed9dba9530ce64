#ifndef QVIMANAGER_COMPONENTS_DLL_LOADER_BASE_H
#define QVIMANAGER_COMPONENTS_DLL_LOADER_BASE_H

// A loader is the bridge between the naming service and one file that
// supplies components. It holds the file's four entry points (the plug-in
// contract, plugin_entry_points.h) and loads the file lazily: nothing is
// loaded before the first query or validation.
//
// DllLoader (dll_loader.h) is the form for plug-in files, LocalLoader
// (local_loader.h) the form for the library's own components. The naming
// service talks to all of them through this class. Loaders have no lock.

#include "qvimanager/components/component.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class DllLoaderBase {
public:
    // The types of the four entry points.
    using ResolveFunction = void (*)(const String& name, SmartPointer<Component>* out);
    using GetComponentDescriptorsFunction = const List<Map<String, Anything>>& (*)();
    using CanUnloadDLLFunction = bool (*)();
    using PrepareForUnloadFunction = void (*)();

    // Slot 1.
    virtual ~DllLoaderBase();
    // Slot 2. A label of the loader and its file.
    virtual Diagnostics::String GetValueString() const = 0;
    // Slot 3. Empty.
    virtual void Invariant() const;
    // Slot 4. The descriptors of the file's components, owned by the file.
    // Loads and binds the file first if it is not loaded: ExceptionDllLoader
    // with "Can't load DLL" if it cannot be loaded, with "DLL doesn't export
    // plugin functions" if it lacks an entry point.
    virtual const List<Map<String, Anything>>& GetComponentDescriptors();
    // Slot 5. The named component into *out, through the file; the same
    // lazy load and failures as GetComponentDescriptors. Whatever the
    // component throws passes through.
    virtual void Resolve(const String& name, SmartPointer<Component>* out);
    // Slot 6. Asks the file's components to get ready for unload. Nothing
    // happens if the file is not loaded; a loaded file without the entry
    // point throws ExceptionDllLoader with "DLL doesn't export plugin
    // functions".
    virtual void PrepareForUnload();

    void SetDLLName(const String& name);
    String GetDLLName() const;

    void SetResolveFunctionPointer(ResolveFunction function);
    void SetGetComponentDescriptorsFunctionPointer(GetComponentDescriptorsFunction function);
    void SetCanUnloadDLLFunctionPointer(CanUnloadDLLFunction function);
    void SetPrepareForUnloadFunctionPointer(PrepareForUnloadFunction function);
    // All four entry points are bound.
    bool FunctionPointersValid();

    // Whether the file is a plug-in: a loaded file answers by its bound
    // entry points; otherwise the file is loaded and bound now. A file that
    // passes stays loaded (its descriptors are read next); so does one that
    // loads but lacks an entry point, with all four pointers null.
    bool IsValidPluginDLL();

    // Unloads the file if it may go. Nothing happens if it is not loaded.
    // A loaded file whose "PluginCanUnloadDll" is not bound throws
    // ExceptionDllLoader with "DLL doesn't export plugin functions". A file
    // that answers false stays loaded with its entry points bound.
    // Otherwise the file is unloaded and the four pointers are cleared,
    // even if the platform refused to unload it.
    void UnloadDLLIfPossible();

protected:
    DllLoaderBase();
    DllLoaderBase(const DllLoaderBase&) = default;
    DllLoaderBase& operator=(const DllLoaderBase&) = default;

    // Slot 7. Binds the four entry points, all or none; true if all four.
    virtual bool GetFunctionAdresses() = 0;
    // Slot 8. Loads the file; true if it is loaded.
    virtual bool LoadDLL() = 0;
    // Slot 9. Unloads the file; true if it was unloaded.
    virtual bool UnloadDLL() = 0;
    // Slot 10.
    virtual bool IsDLLLoaded() const = 0;

    ResolveFunction resolve;
    GetComponentDescriptorsFunction getComponentDescriptors;
    CanUnloadDLLFunction canUnloadDLL;
    PrepareForUnloadFunction prepareForUnload;
    String dllName;

private:
    // Loads and binds the file if it is not loaded yet.
    void EnsureLoaded();
};

} // namespace Utilities

#endif

#ifndef QVIMANAGER_COMPONENTS_DLL_LOADER_H
#define QVIMANAGER_COMPONENTS_DLL_LOADER_H

// DllLoader: the loader of a plug-in file, a shared object with the four
// entry points of plugin_entry_points.h.
//
//     SmartPointer<DllLoader> loader = DllLoader::NewInstance();
//     loader->SetDLLName("/opt/app/plugins/driver.dll");
//     if (loader->IsValidPluginDLL()) { ... loader->Resolve(name, &out); }
//
// The file is loaded on the first query or validation, privately (its
// symbols are not shared with other files), with every symbol bound at
// once. When the last pointer to the loader goes, the file is asked
// whether it may go ("PluginCanUnloadDll") and unloaded if so; a file that
// answers false, or never bound its entry points, stays loaded until the
// process ends.
//
// A name without a '/' is taken as a file in the current directory, never
// looked up on the system's library path. A plug-in whose component
// registration failed while it loaded (PluginLoadFailure) counts as a file
// that could not be loaded, and is unloaded again at once. A file that is
// not a shared object of this machine, or is truncated, cannot be loaded
// either: its headers are checked first, and it never reaches the system's
// dynamic loader.

#include "qvimanager/components/dll_loader_base.h"

namespace Utilities {

class DllLoader : public DllLoaderBase {
public:
    // A new loader for this platform, without a file name yet.
    static SmartPointer<DllLoader> NewInstance();

protected:
    DllLoader() = default;
};

} // namespace Utilities

#endif

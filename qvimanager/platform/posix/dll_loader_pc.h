#ifndef QVIMANAGER_PLATFORM_POSIX_DLL_LOADER_PC_H
#define QVIMANAGER_PLATFORM_POSIX_DLL_LOADER_PC_H

// DllLoader_PC: DllLoader on the platform's dynamic loader (dlopen, dlsym,
// dlclose). Only DllLoader::NewInstance names this class.

#include "qvimanager/components/dll_loader.h"

namespace Utilities {

class DllLoader_PC : public DllLoader {
public:
    DllLoader_PC();
    // Unloads the file if it may go; every failure is swallowed, so a file
    // that never bound its entry points stays loaded.
    ~DllLoader_PC() override;

    // "DLL name: <name>; DLL's instance handle is: <handle>", the handle
    // as an unsigned decimal number (0 when not loaded).
    Diagnostics::String GetValueString() const override;
    void Invariant() const override {}

protected:
    // Looks up the four entry points; keeps them only if all four exist.
    bool GetFunctionAdresses() override;
    // dlopen of the file, every symbol bound now, none shared with other
    // files. A failure traces "Can't load DLL: <path> - reason: <the
    // loader's text>" (package "Utilities", class "DllLoader_PC").
    bool LoadDLL() override;
    // dlclose; true if it succeeded, and then the handle is cleared.
    bool UnloadDLL() override;
    // The file is loaded: the handle is not null.
    bool IsDLLLoaded() const override;

private:
    DllLoader_PC(const DllLoader_PC&) = delete;
    DllLoader_PC& operator=(const DllLoader_PC&) = delete;

    void* instanceHandle;
};

} // namespace Utilities

#endif

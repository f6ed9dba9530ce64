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
    //
    // The file is checked before it is given to dlopen, since the dynamic
    // loader maps what the file's headers describe and dies with SIGBUS on
    // a page a truncated file does not hold. The file must be a regular
    // file (opened without blocking, so a named pipe is refused, not waited
    // on); its ELF header must be complete, with the magic and with the
    // class, byte order and machine of this library (read from the
    // library's own ELF header as it is mapped, found with dladdr), and of
    // type ET_DYN; its program header entries must be of this class's size
    // and the whole table within the file; the file's part of every PT_LOAD
    // and PT_DYNAMIC segment must be within it; and so must the section
    // header table, if there is one. A file that fails is not loaded, and
    // the trace gives the reason ("not a regular file", "not an ELF file",
    // "not a shared object of this machine: ...", "the file is truncated:
    // ..."). The check sees the file as it is then: a file changed between
    // the check and dlopen is beyond it.
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

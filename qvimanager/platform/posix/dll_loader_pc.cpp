#include "qvimanager/platform/posix/dll_loader_pc.h"

#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/platform/posix/directory_pc.h"

#include <cstdint>
#include <dlfcn.h>
#include <string>

namespace Utilities {

namespace {

// The reason the dynamic loader gives for its last failure.
const char* LoaderReason()
{
    const char* const reason = dlerror();
    return reason == nullptr ? "unknown" : reason;
}

void* Lookup(void* handle, const char* name)
{
    dlerror();
    return dlsym(handle, name);
}

} // namespace

DllLoader_PC::DllLoader_PC() : instanceHandle(nullptr) {}

DllLoader_PC::~DllLoader_PC()
{
    try {
        UnloadDLLIfPossible();
    } catch (...) {
        // A file that cannot tell whether it may go stays loaded.
    }
}

Diagnostics::String DllLoader_PC::GetValueString() const
{
    Diagnostics::String value("DLL name: ");
    value += dllName.GetCharPointer();
    value += "; DLL's instance handle is: ";
    value += std::to_string(reinterpret_cast<std::uintptr_t>(instanceHandle)).c_str();
    return value;
}

bool DllLoader_PC::GetFunctionAdresses()
{
    resolve = reinterpret_cast<ResolveFunction>(Lookup(instanceHandle, "PluginResolve"));
    getComponentDescriptors =
        reinterpret_cast<GetComponentDescriptorsFunction>(Lookup(instanceHandle, "PluginGetComponentDescriptors"));
    canUnloadDLL = reinterpret_cast<CanUnloadDLLFunction>(Lookup(instanceHandle, "PluginCanUnloadDll"));
    prepareForUnload = reinterpret_cast<PrepareForUnloadFunction>(Lookup(instanceHandle, "PluginPrepareForUnload"));
    if (FunctionPointersValid()) {
        return true;
    }
    // A file is a plug-in only with all four.
    resolve = nullptr;
    getComponentDescriptors = nullptr;
    canUnloadDLL = nullptr;
    prepareForUnload = nullptr;
    return false;
}

bool DllLoader_PC::LoadDLL()
{
    QVI_TRACE_BEGIN(this, "Utilities", "DllLoader_PC", "LoadDLL");
    QVI_TRACE_PARAMETER("dllName", dllName);
    QVI_TRACE_CALL();
    String path = Directory_PC::ConvSeperatorDependend(dllName);
    if (path.FindSubstring(String("/"), 0) < 0) {
        // A file here, not a library to look up on the system's path.
        path = String("./") + path;
    }
    instanceHandle = dlopen(path.GetCharPointer(), RTLD_NOW | RTLD_LOCAL);
    if (instanceHandle == nullptr) {
        QVI_TRACE_MESSAGE(this, "Utilities", "DllLoader_PC", "LoadDLL", "Can't load DLL: ", path, " - reason: ",
                          LoaderReason());
        return false;
    }
    using LoadFailureFunction = const char* (*)();
    const auto loadFailure = reinterpret_cast<LoadFailureFunction>(Lookup(instanceHandle, "PluginLoadFailure"));
    const char* const registrationFailure = loadFailure == nullptr ? nullptr : loadFailure();
    if (registrationFailure != nullptr) {
        // The file could not register its components: as if it had not
        // loaded at all.
        QVI_TRACE_MESSAGE(this, "Utilities", "DllLoader_PC", "LoadDLL", "Can't load DLL: ", path, " - reason: ",
                          registrationFailure);
        dlclose(instanceHandle);
        instanceHandle = nullptr;
        return false;
    }
    return true;
}

bool DllLoader_PC::UnloadDLL()
{
    QVI_TRACE(this, "Utilities", "DllLoader_PC", "UnloadDLL");
    if (dlclose(instanceHandle) == 0) {
        instanceHandle = nullptr;
        return true;
    }
    return false;
}

bool DllLoader_PC::IsDLLLoaded() const
{
    return instanceHandle != nullptr;
}

} // namespace Utilities

#include "qvimanager/components/dll_loader_base.h"

#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/foundation/exception.h"

namespace Utilities {

namespace {

const char* const kCantLoad = "Can't load DLL";
const char* const kNoEntryPoints = "DLL doesn't export plugin functions";

} // namespace

DllLoaderBase::DllLoaderBase()
    : resolve(nullptr), getComponentDescriptors(nullptr), canUnloadDLL(nullptr), prepareForUnload(nullptr),
      dllName()
{
}

DllLoaderBase::~DllLoaderBase() = default;

void DllLoaderBase::Invariant() const {}

void DllLoaderBase::EnsureLoaded()
{
    if (IsDLLLoaded()) {
        return;
    }
    if (!LoadDLL()) {
        throw ExceptionDllLoader(String(kCantLoad));
    }
    if (!GetFunctionAdresses()) {
        throw ExceptionDllLoader(String(kNoEntryPoints));
    }
}

const List<Map<String, Anything>>& DllLoaderBase::GetComponentDescriptors()
{
    EnsureLoaded();
    if (getComponentDescriptors == nullptr) {
        throw ExceptionDllLoader(String(kNoEntryPoints));
    }
    return getComponentDescriptors();
}

void DllLoaderBase::Resolve(const String& name, SmartPointer<Component>* out)
{
    QVI_TRACE_BEGIN(this, "Utilities", "DllLoaderBase", "Resolve");
    QVI_TRACE_PARAMETER("name", name);
    QVI_TRACE_CALL();
    EnsureLoaded();
    if (resolve == nullptr) {
        throw ExceptionDllLoader(String(kNoEntryPoints));
    }
    resolve(name, out);
}

void DllLoaderBase::PrepareForUnload()
{
    QVI_TRACE_BEGIN(this, "Utilities", "DllLoaderBase", "PrepareForUnload");
    QVI_TRACE_PARAMETER("dll", dllName);
    QVI_TRACE_CALL();
    if (!IsDLLLoaded()) {
        return;
    }
    if (prepareForUnload == nullptr) {
        throw ExceptionDllLoader(String(kNoEntryPoints));
    }
    prepareForUnload();
}

void DllLoaderBase::SetDLLName(const String& name)
{
    dllName = name;
}

String DllLoaderBase::GetDLLName() const
{
    return dllName;
}

void DllLoaderBase::SetResolveFunctionPointer(ResolveFunction function)
{
    resolve = function;
}

void DllLoaderBase::SetGetComponentDescriptorsFunctionPointer(GetComponentDescriptorsFunction function)
{
    getComponentDescriptors = function;
}

void DllLoaderBase::SetCanUnloadDLLFunctionPointer(CanUnloadDLLFunction function)
{
    canUnloadDLL = function;
}

void DllLoaderBase::SetPrepareForUnloadFunctionPointer(PrepareForUnloadFunction function)
{
    prepareForUnload = function;
}

bool DllLoaderBase::FunctionPointersValid()
{
    return resolve != nullptr && getComponentDescriptors != nullptr && canUnloadDLL != nullptr &&
           prepareForUnload != nullptr;
}

bool DllLoaderBase::IsValidPluginDLL()
{
    if (IsDLLLoaded()) {
        return FunctionPointersValid();
    }
    return LoadDLL() && GetFunctionAdresses();
}

void DllLoaderBase::UnloadDLLIfPossible()
{
    QVI_TRACE_BEGIN(this, "Utilities", "DllLoaderBase", "UnloadDLLIfPossible");
    QVI_TRACE_PARAMETER("dll", dllName);
    QVI_TRACE_CALL();
    if (!IsDLLLoaded()) {
        return;
    }
    if (canUnloadDLL == nullptr) {
        throw ExceptionDllLoader(String(kNoEntryPoints));
    }
    if (!canUnloadDLL()) {
        return;
    }
    if (!UnloadDLL()) {
        QVI_TRACE_MESSAGE(this, "Utilities", "DllLoaderBase", "UnloadDLLIfPossible", "Warning - DLL \"", dllName,
                          "\" has not been unloaded.");
    }
    resolve = nullptr;
    getComponentDescriptors = nullptr;
    canUnloadDLL = nullptr;
    prepareForUnload = nullptr;
}

} // namespace Utilities

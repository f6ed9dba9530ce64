#ifndef QVIMANAGER_COMPONENTS_PLUGIN_ENTRY_POINTS_H
#define QVIMANAGER_COMPONENTS_PLUGIN_ENTRY_POINTS_H

// The plug-in contract. A plug-in file is a shared object that exports
// these four functions with C linkage under exactly these names; a file
// that lacks any of them is not a plug-in. A plug-in built with
// qvimanager_add_plugin gets all four, forwarding to its own
// ComponentFactory:
//
//   PluginResolve                  ComponentFactory::Resolve
//   PluginGetComponentDescriptors  ComponentFactory::GetDescriptors
//   PluginCanUnloadDll             not ComponentFactory::HasInstances
//   PluginPrepareForUnload         ComponentFactory::PrepareForUnload
//
// String, List, Map, Anything, SmartPointer and Component cross the
// boundary as objects, so a plug-in is built against the same library it is
// loaded into, and must not carry a copy of it.
//
// Besides the four, a plug-in built with the kit exports
// PluginLoadFailure: the text of a component registration that failed while
// the file loaded (a descriptor without "name"), or null. A loader that
// finds a text there treats the file as one that could not be loaded. The
// function is optional: a file without it loads as usual.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

// The entry points are C++ functions with unmangled names: the loader finds
// them by name and calls them from C++, so a C++ reference may cross. Clang
// warns about such a return type under C linkage; the warning is off for
// these declarations, in every file that includes them.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" {

// Makes or hands out the named component into *out; an unknown name leaves
// *out alone.
void PluginResolve(const Utilities::String& name, Utilities::SmartPointer<Utilities::Component>* out);
// The descriptors of all components of the file, owned by the file.
const Utilities::List<Utilities::Map<Utilities::String, Utilities::Anything>>& PluginGetComponentDescriptors();
// True when no component of the file is alive, so the file may go.
bool PluginCanUnloadDll();
// Asks the components of the file to get ready for unload.
void PluginPrepareForUnload();
// The text of the first failed registration of the file, or null.
const char* PluginLoadFailure();
}

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

#endif

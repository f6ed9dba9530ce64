#ifndef QVIMANAGER_TESTS_SUPPORT_LIBRARY_COMPONENTS_H
#define QVIMANAGER_TESTS_SUPPORT_LIBRARY_COMPONENTS_H

// The library's own components, in the order the library registers them
// while it loads. Every naming service starts with them, before any
// plug-in: tests that list components expect them first.

#include <string>
#include <vector>

namespace TestSupport {

inline std::vector<std::string> LibraryComponents()
{
    return {"QVIInstrumentManager", "MutexImplementation", "ThreadImplementation"};
}

// The library's components followed by `others`.
inline std::vector<std::string> LibraryComponentsAnd(const std::vector<std::string>& others)
{
    std::vector<std::string> names = LibraryComponents();
    names.insert(names.end(), others.begin(), others.end());
    return names;
}

// The library's components, each after a blank: " QVIInstrumentManager
// MutexImplementation ThreadImplementation".
inline std::string LibraryComponentNames()
{
    std::string line;
    for (const std::string& name : LibraryComponents()) {
        line += " " + name;
    }
    return line;
}

} // namespace TestSupport

#endif

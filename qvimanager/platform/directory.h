#ifndef QVIMANAGER_PLATFORM_DIRECTORY_H
#define QVIMANAGER_PLATFORM_DIRECTORY_H

// Utilities::Directory: a directory of the file system, as the library lists
// it (the plug-in folder). Directory is abstract; NewInstance makes the
// platform's implementation, and the rest of the library holds a
// SmartPointer<Directory>.
//
// Paths handed in and out use '/'; inside, the platform's separator is
// kept, without a trailing separator. The root is kept as the empty path,
// so that the path, a separator and a name always make the path of an
// entry; GetFullPath shows it as "/".
//
// Failures raise ExceptionResourceNotAvailable with texts passed through
// LanguageServiceInterface::GetTranslation before their token is filled:
//   "Error: Directory %DIR% does not exist"
//   "Error: Current directory not available: %REASON%"
//
// The virtual operations stand in their slot order, the order that
// implementations and plug-ins rely on; do not reorder them. Objects have no
// locks; no operation changes the process's current directory.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

#include <cstdint>
#include <vector>

namespace Utilities {

class File;

class Directory {
public:
    enum DirectoryType : std::int32_t {
        // The process's working directory. If it cannot be read (it was
        // removed, say), NewInstance throws "Error: Current directory not
        // available: %REASON%" with the system's reason.
        CurrentDirectory = 0,
        // The directory of the running program's file. Where that cannot be
        // had, the root.
        ApplicationDirectory = 1,
        // The system's configuration directory, "/etc".
        WindowsDirectory = 2,
        // The path given to NewInstance, less one trailing separator.
        SpecifiedDirectory = 3,
        // The root of the file system; its subdirectories are what
        // GetFirstDirectory lists.
        ComputerDirectory = 4
    };

    // A Directory of the given kind; `path` counts for SpecifiedDirectory
    // only and is ignored otherwise.
    //
    // A SpecifiedDirectory is tested first, by trying to make it: if that
    // works it was missing, is removed again, and NewInstance throws "Error:
    // Directory %DIR% does not exist" with %DIR% replaced by `path`. Every
    // failure to make it counts as existing, so a path whose parent is
    // missing (or that names a file) passes the test.
    static SmartPointer<Directory> NewInstance(DirectoryType type, const String& path = String());

    virtual ~Directory();

    // Makes the subdirectory `name`. The result of the attempt is not
    // reported: Create never throws, also when the directory exists already
    // or cannot be made, and callers rely on nothing else.
    virtual void Create(const String& name) = 0;
    // All the entries whose names match `pattern` ('*' and '?' as in a
    // shell) and contain no '.', sorted by name in byte order, each as a
    // SpecifiedDirectory. The name decides, not the kind of entry: "." and
    // "..", and a directory "a.b", are left out, a file "README" is taken
    // in. Nothing found, or a directory that cannot be read: empty.
    virtual std::vector<SmartPointer<Directory>> GetFirstDirectory(const String& pattern) = 0;
    // All the entries whose names match `name`, '.', `extension` and have at
    // least one '.' and more than 2 characters, sorted by name in byte
    // order, each as a File. Again the name decides: a directory "x.dll" is
    // listed (and cannot be opened). Nothing found: empty.
    virtual std::vector<SmartPointer<File>> GetFirstFile(const String& name, const String& extension) = 0;
    // The directory without its last piece, as a SpecifiedDirectory. A
    // relative path cut to nothing ("plugins") gives the current directory
    // "."; the root's parent is the root.
    virtual SmartPointer<Directory> GetParent() = 0;
    // The last piece of the path; empty for the root.
    virtual String GetName() = 0;
    // The path with '/' between its pieces; "/" for the root.
    virtual String GetFullPath() = 0;
    virtual void Invariant() const = 0;
    // The path as it is kept.
    virtual Diagnostics::String GetValueString() = 0;
    // Takes the other's path and kind.
    virtual Directory& operator=(const Directory& other) = 0;

protected:
    Directory();
    Directory(const Directory& other);
};

} // namespace Utilities

// Listings hand out Files: the complete class comes with this header.
#include "qvimanager/platform/file.h"

#endif

#ifndef QVIMANAGER_PLATFORM_POSIX_DIRECTORY_PC_H
#define QVIMANAGER_PLATFORM_POSIX_DIRECTORY_PC_H

// Directory_PC: Directory on a POSIX system, where the separator is '/'.
// Only Directory::NewInstance makes one; see directory.h for what the
// operations do.
//
// What each kind of directory is here:
//   CurrentDirectory      getcwd, of any length
//   ApplicationDirectory  /proc/self/exe up to its last '/', of any length;
//                         the root if that cannot be read
//   WindowsDirectory      "/etc"
//   SpecifiedDirectory    the given path less one trailing '/'
//   ComputerDirectory     the root, kept as ""
// The root, from any kind, is kept as the empty path.
//
// Listings read the directory with opendir and readdir, match the names
// with fnmatch (no flags: '*' matches a leading '.' too, and a pattern with
// a '/' matches nothing), sort the matches by name in byte order, and only
// then apply the rules on dots.

#include "qvimanager/platform/directory.h"

namespace Utilities {

class Directory_PC : public Directory {
public:
    // `path` counts for SpecifiedDirectory only, with the platform's
    // separators. Throws for a CurrentDirectory that cannot be read.
    Directory_PC(DirectoryType type, const String& path);
    Directory_PC(const Directory_PC& other);
    Directory_PC& operator=(const Directory_PC& other);
    ~Directory_PC() override;

    // The path with the platform's separators, from one with '/'; on this
    // platform the text stays as it is.
    static String ConvSeperatorDependend(const String& path);
    // The path with '/', from one with the platform's separators; on this
    // platform the text stays as it is.
    static String ConvSeperatorIndependend(const String& path);

    // The existence test of Directory::NewInstance: tries to make the
    // directory `path` (mode 0777 less the umask). If that works the
    // directory was missing: it is removed again and the result is true.
    // A failure of any kind gives false.
    static bool WasMissing(const String& path);

    // Makes `path`, '/', `name`; compares the result with 2, which it never
    // is, and so never throws (see Directory::Create).
    void Create(const String& name) override;
    std::vector<SmartPointer<Directory>> GetFirstDirectory(const String& pattern) override;
    std::vector<SmartPointer<File>> GetFirstFile(const String& name, const String& extension) override;
    SmartPointer<Directory> GetParent() override;
    String GetName() override;
    String GetFullPath() override;
    void Invariant() const override {}
    Diagnostics::String GetValueString() override;
    // Throws ExceptionWrongType with "Directory_PC::operator=: the other
    // directory is no Directory_PC" for a Directory of another
    // implementation, before anything changes.
    Directory& operator=(const Directory& other) override;

private:
    // '/'-separated path, no trailing '/'; "" is the root.
    String path;
    DirectoryType directoryType;
};

} // namespace Utilities

#endif

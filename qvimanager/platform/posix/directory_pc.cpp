#include "qvimanager/platform/posix/directory_pc.h"

#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/file.h"
#include "qvimanager/platform/language_service_interface.h"
#include "qvimanager/platform/path_separators.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fnmatch.h>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace Utilities {

namespace {

constexpr char Separator = '/';

// The first size tried for the text of getcwd and readlink; a longer path
// gets a buffer twice as large, as often as needed, where a fixed buffer
// would cut it.
constexpr std::size_t FirstPathBufferSize = 0x400;

// `path` less one trailing separator; "/" becomes "", the root.
String WithoutTrailingSeparator(const String& path)
{
    const unsigned long length = path.Length();
    if (length > 0 && path.GetCharPointer()[length - 1] == Separator) {
        return String(std::string(path.GetCharPointer(), length - 1));
    }
    return path;
}

String CurrentPath()
{
    std::string buffer(FirstPathBufferSize, '\0');
    while (getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE) {
            String text = LanguageServiceInterface().GetTranslation("Error: Current directory not available: %REASON%");
            text.Replace("%REASON%", std::strerror(errno));
            throw ExceptionResourceNotAvailable(text);
        }
        buffer.resize(buffer.size() * 2);
    }
    return String(buffer.c_str());
}

// The directory of the running program's file, or "" (the root) where it
// cannot be had.
String ApplicationPath()
{
    std::string buffer(FirstPathBufferSize, '\0');
    for (;;) {
        const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
        if (length < 0) {
            return String();
        }
        if (static_cast<std::size_t>(length) < buffer.size()) {
            buffer.resize(static_cast<std::size_t>(length));
            break;
        }
        // The link may have been cut: try again with more room.
        buffer.resize(buffer.size() * 2);
    }
    const std::size_t last = buffer.rfind(Separator);
    if (last == std::string::npos) {
        return String();
    }
    return String(buffer.substr(0, last));
}

// The names in `directory` ("" is the root) that match `pattern`, sorted
// by name in byte order. A directory that cannot be read gives none.
std::vector<String> SortedMatches(const String& directory, const String& pattern)
{
    std::vector<std::string> names;
    const std::string where = directory.Length() == 0 ? std::string(1, Separator) : std::string(directory);
    DIR* const listing = opendir(where.c_str());
    if (listing == nullptr) {
        return {};
    }
    const std::string wanted(pattern);
    for (const dirent* entry = readdir(listing); entry != nullptr; entry = readdir(listing)) {
        if (fnmatch(wanted.c_str(), entry->d_name, 0) == 0) {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(listing);
    // std::string compares its characters as unsigned bytes.
    std::sort(names.begin(), names.end());
    return std::vector<String>(names.begin(), names.end());
}

} // namespace

Directory_PC::Directory_PC(DirectoryType type, const String& specifiedPath) : path(), directoryType(type)
{
    switch (type) {
    case CurrentDirectory:
        path = WithoutTrailingSeparator(CurrentPath());
        break;
    case ApplicationDirectory:
        path = WithoutTrailingSeparator(ApplicationPath());
        break;
    case WindowsDirectory:
        path = "/etc";
        break;
    case SpecifiedDirectory:
        path = WithoutTrailingSeparator(specifiedPath);
        break;
    case ComputerDirectory:
    default:
        // The root, and what an unknown kind gets.
        path = String();
        break;
    }
}

Directory_PC::Directory_PC(const Directory_PC& other)
    : Directory(other), path(other.path), directoryType(other.directoryType)
{
}

Directory_PC& Directory_PC::operator=(const Directory_PC& other)
{
    path = other.path;
    directoryType = other.directoryType;
    return *this;
}

Directory_PC::~Directory_PC() = default;

String Directory_PC::ConvSeperatorDependend(const String& path)
{
    return ConvertToPlatformSeparators(path, Separator);
}

String Directory_PC::ConvSeperatorIndependend(const String& path)
{
    return ConvertToIndependentSeparators(path, Separator);
}

bool Directory_PC::WasMissing(const String& path)
{
    if (mkdir(path.GetCharPointer(), 0777) != 0) {
        return false;
    }
    rmdir(path.GetCharPointer());
    return true;
}

void Directory_PC::Create(const String& name)
{
    const String target = path + String(Separator) + name;
    // mkdir gives 0 or -1, never 2: this failure is never raised.
    if (mkdir(target.GetCharPointer(), 0777) == 2) {
        String text = LanguageServiceInterface().GetTranslation("Creation of subdirectory '%DIRECTORYNAME%' failed");
        text.Replace("%DIRECTORYNAME%", name);
        throw ExceptionResourceNotAvailable(text);
    }
}

std::vector<SmartPointer<Directory>> Directory_PC::GetFirstDirectory(const String& pattern)
{
    std::vector<SmartPointer<Directory>> directories;
    for (const String& name : SortedMatches(path, pattern)) {
        // No dot in the name: exactly one token by ".".
        if (name.GetTokenCount('.') == 1) {
            // The entry was just listed: it exists, and is made without the
            // existence test (which would try to create it).
            directories.push_back(SmartPointer<Directory>(
                new Directory_PC(SpecifiedDirectory, path + String(Separator) + name)));
        }
    }
    return directories;
}

std::vector<SmartPointer<File>> Directory_PC::GetFirstFile(const String& name, const String& extension)
{
    std::vector<SmartPointer<File>> files;
    for (const String& entry : SortedMatches(path, name + String('.') + extension)) {
        if (entry.GetTokenCount('.') > 1 && entry.Length() > 2) {
            files.push_back(File::NewInstance(ConvSeperatorIndependend(path + String(Separator) + entry)));
        }
    }
    return files;
}

SmartPointer<Directory> Directory_PC::GetParent()
{
    const long last = path.GetReversePosition(Separator, -1);
    String parent;
    if (last >= 0) {
        // Absolute paths cut to nothing give "", the root.
        parent = String(std::string(path.GetCharPointer(), static_cast<std::size_t>(last)));
    } else if (path.Length() > 0) {
        // A relative path of one piece: its parent is the current directory.
        parent = ".";
    }
    return NewInstance(SpecifiedDirectory, ConvSeperatorIndependend(parent));
}

String Directory_PC::GetName()
{
    const unsigned long count = path.GetTokenCount(Separator);
    if (count == 0) {
        return String();
    }
    return path.GetToken(count - 1, Separator);
}

String Directory_PC::GetFullPath()
{
    if (path.Length() == 0) {
        return String(Separator);
    }
    return ConvSeperatorIndependend(path);
}

Diagnostics::String Directory_PC::GetValueString()
{
    return Diagnostics::String(path.GetCharPointer());
}

Directory& Directory_PC::operator=(const Directory& other)
{
    const auto* const same = dynamic_cast<const Directory_PC*>(&other);
    if (same == nullptr) {
        throw ExceptionWrongType("Directory_PC::operator=: the other directory is no Directory_PC");
    }
    return *this = *same;
}

} // namespace Utilities

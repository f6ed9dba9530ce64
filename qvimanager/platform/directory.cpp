#include "qvimanager/platform/directory.h"

#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/language_service_interface.h"
#include "qvimanager/platform/posix/directory_pc.h"

namespace Utilities {

SmartPointer<Directory> Directory::NewInstance(DirectoryType type, const String& path)
{
    const String platformPath = Directory_PC::ConvSeperatorDependend(path);
    // The message names the path as the caller gave it.
    if (type == SpecifiedDirectory && Directory_PC::WasMissing(platformPath)) {
        String text = LanguageServiceInterface().GetTranslation("Error: Directory %DIR% does not exist");
        text.Replace("%DIR%", path);
        throw ExceptionResourceNotAvailable(text);
    }
    return SmartPointer<Directory>(new Directory_PC(type, platformPath));
}

Directory::Directory() = default;
Directory::Directory(const Directory&) = default;
Directory::~Directory() = default;

} // namespace Utilities

#include "qvimanager/platform/file.h"

#include "qvimanager/platform/posix/directory_pc.h"
#include "qvimanager/platform/posix/file_pc.h"

namespace Utilities {

SmartPointer<File> File::NewInstance(const String& path)
{
    return SmartPointer<File>(new File_PC(Directory_PC::ConvSeperatorDependend(path)));
}

File::File() = default;
File::File(const File&) = default;
File& File::operator=(const File&) = default;
File::~File() = default;

} // namespace Utilities

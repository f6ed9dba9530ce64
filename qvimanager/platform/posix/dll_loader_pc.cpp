#include "qvimanager/platform/posix/dll_loader_pc.h"

#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/platform/posix/directory_pc.h"

#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

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

// The ELF layout of this process: the class it was compiled for, and so the
// size of its headers.
using ElfHeader = std::conditional_t<sizeof(void*) == 8, Elf64_Ehdr, Elf32_Ehdr>;
using ProgramHeader = std::conditional_t<sizeof(void*) == 8, Elf64_Phdr, Elf32_Phdr>;
constexpr unsigned char kOwnClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
constexpr unsigned char kOwnByteOrder = std::endian::native == std::endian::little ? ELFDATA2LSB : ELFDATA2MSB;

// The machine of this library, read from its own ELF header as it is mapped
// (dladdr on a function of this file gives the start of the mapping, where
// the header lies); EM_NONE if that header cannot be found there or is not
// of the class and byte order this file was compiled for. The class and
// byte order themselves are the compiled ones, which the mapped header
// confirms.
Elf32_Half OwnMachine()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&OwnMachine), &info) == 0 || info.dli_fbase == nullptr) {
        return EM_NONE;
    }
    ElfHeader own{};
    std::memcpy(&own, info.dli_fbase, sizeof own);
    if (std::memcmp(own.e_ident, ELFMAG, SELFMAG) != 0 || own.e_ident[EI_CLASS] != kOwnClass ||
        own.e_ident[EI_DATA] != kOwnByteOrder) {
        return EM_NONE;
    }
    return own.e_machine;
}

// An open file, closed when it goes.
class OpenFile {
public:
    explicit OpenFile(const char* path) : descriptor(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~OpenFile()
    {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    // Reads `size` bytes at `offset` into `buffer`; false if the file gives
    // fewer.
    bool ReadAt(void* buffer, std::uint64_t size, std::uint64_t offset) const
    {
        auto* const bytes = static_cast<unsigned char*>(buffer);
        std::uint64_t done = 0;
        while (done < size) {
            const ssize_t got = pread(descriptor, bytes + done, size - done, static_cast<off_t>(offset + done));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got <= 0) {
                return false;
            }
            done += static_cast<std::uint64_t>(got);
        }
        return true;
    }

    const int descriptor;
};

// "the file is truncated: it has <size> bytes, its <region> needs <length>
// bytes from byte <offset>".
std::string Truncated(std::uint64_t size, const std::string& region, std::uint64_t length, std::uint64_t offset)
{
    return "the file is truncated: it has " + std::to_string(size) + " bytes, its " + region + " needs " +
           std::to_string(length) + " bytes from byte " + std::to_string(offset);
}

// Whether `length` bytes from byte `offset` lie within a file of `size`
// bytes (without overflowing).
bool Within(std::uint64_t size, std::uint64_t offset, std::uint64_t length)
{
    return offset <= size && length <= size - offset;
}

// Why the file at `path` must not be given to the dynamic loader, or ""
// when it may be: the loader maps the file's segments as they are described
// and dies with SIGBUS on a page the file does not hold, so the headers are
// read here first, and every region the loader maps or reads must lie within
// the file.
std::string RefusalOf(const char* path)
{
    const OpenFile file(path);
    if (file.descriptor < 0) {
        return std::string("the file cannot be opened: ") + std::strerror(errno);
    }
    struct stat status {};
    if (fstat(file.descriptor, &status) != 0) {
        return std::string("the file cannot be examined: ") + std::strerror(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return "not a regular file";
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    ElfHeader header{};
    const std::uint64_t headerBytes = size < sizeof header ? size : sizeof header;
    if (!file.ReadAt(&header, headerBytes, 0)) {
        return "the file cannot be read";
    }
    if (size < SELFMAG || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        return "not an ELF file";
    }
    if (size < EI_NIDENT) {
        return Truncated(size, "ELF identification", EI_NIDENT, 0);
    }
    if (header.e_ident[EI_CLASS] != kOwnClass) {
        return "not a shared object of this machine: its ELF class is " + std::to_string(header.e_ident[EI_CLASS]) +
               ", this library's is " + std::to_string(kOwnClass);
    }
    if (header.e_ident[EI_DATA] != kOwnByteOrder) {
        return "not a shared object of this machine: its byte order (EI_DATA) is " +
               std::to_string(header.e_ident[EI_DATA]) + ", this library's is " + std::to_string(kOwnByteOrder);
    }
    if (size < sizeof header) {
        return Truncated(size, "ELF header", sizeof header, 0);
    }
    // If this library's machine is unknown, the machine is left to the
    // dynamic loader: it refuses a foreign one from the headers alone,
    // before it maps anything.
    static const Elf32_Half ownMachine = OwnMachine();
    if (ownMachine != EM_NONE && header.e_machine != ownMachine) {
        return "not a shared object of this machine: its machine (e_machine) is " + std::to_string(header.e_machine) +
               ", this library's is " + std::to_string(ownMachine);
    }
    if (header.e_type != ET_DYN) {
        return "not a shared object: its ELF type (e_type) is " + std::to_string(header.e_type);
    }
    if (header.e_phentsize != sizeof(ProgramHeader)) {
        return "malformed program header table: entries of " + std::to_string(header.e_phentsize) + " bytes, not " +
               std::to_string(sizeof(ProgramHeader));
    }
    const std::uint64_t programHeaderBytes = std::uint64_t{header.e_phnum} * sizeof(ProgramHeader);
    if (!Within(size, header.e_phoff, programHeaderBytes)) {
        return Truncated(size, "program header table", programHeaderBytes, header.e_phoff);
    }
    std::vector<ProgramHeader> segments(header.e_phnum);
    if (!file.ReadAt(segments.data(), programHeaderBytes, header.e_phoff)) {
        return "the file cannot be read";
    }
    for (std::size_t index = 0; index < segments.size(); ++index) {
        const ProgramHeader& segment = segments[index];
        if (segment.p_type != PT_LOAD && segment.p_type != PT_DYNAMIC) {
            continue;
        }
        if (!Within(size, segment.p_offset, segment.p_filesz)) {
            const char* const type = segment.p_type == PT_LOAD ? "PT_LOAD" : "PT_DYNAMIC";
            return Truncated(size, std::string(type) + " segment (program header " + std::to_string(index) + ")",
                             segment.p_filesz, segment.p_offset);
        }
    }
    if (header.e_shoff != 0) {
        // With more sections than e_shnum can hold, it is 0 and the count
        // is in the first entry, which must be there.
        const std::uint64_t sectionHeaderBytes =
            std::uint64_t{header.e_shnum == 0 ? Elf32_Half{1} : header.e_shnum} * header.e_shentsize;
        if (!Within(size, header.e_shoff, sectionHeaderBytes)) {
            return Truncated(size, "section header table", sectionHeaderBytes, header.e_shoff);
        }
    }
    return "";
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
    const std::string refusal = RefusalOf(path.GetCharPointer());
    if (!refusal.empty()) {
        QVI_TRACE_MESSAGE(this, "Utilities", "DllLoader_PC", "LoadDLL", "Can't load DLL: ", path, " - reason: ",
                          refusal.c_str());
        return false;
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

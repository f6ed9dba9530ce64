// The component "Preferences": the settings store that ships with the
// library, keeping sections and keys in a text file (the format, its
// escapes and its case rule: preferences_document.h).
//
// The file: $QVIMANAGER_PREFERENCES when it is set and not empty (a file's
// path, for tests and for users who want another file), else
// $XDG_CONFIG_HOME/qvimanager/preferences.ini when that is an absolute
// path, else $HOME/.config/qvimanager/preferences.ini (the home folder of
// the user's account when HOME is not set). The name is found anew at
// every call.
//
// GetValue reads the file as it is now, at every call, so it sees what
// another process wrote; no file means no key. SetValue makes the missing
// folders (mode 0700; only a write makes them), then, holding an exclusive
// flock on "<file>.lock" beside the file (a lock file of its own, so that
// the lock does not go with the file a writer replaces), reads the file
// again, changes it, writes the whole text to "<file>.tmp", flushes it to
// the disk, renames it over the file and flushes the folder. A reader thus
// finds the old file or the new one, never a part of one, whenever a
// writer is killed; two writers of different keys keep both; a temporary
// file that a killed writer left is written over by the next one. The file
// keeps its permission bits; a new one gets 0644 less the umask.
//
// A file that cannot be read (a folder, or a FIFO, device or socket, which
// could block or never end, at its place), or is corrupt, is an error and
// never an empty store: GetValue and SetValue throw QVIManager::ExceptionQVIModule
// ("Error in Preferences: <file>, line <n>: <what is wrong>", or
// "<file>: <what failed>: <the system's reason>"), and SetValue leaves such
// a file as it is. ExceptionQVIModule is the exception the library keeps
// for the instrument side's plug-ins, and the instrument manager is this
// store's caller; it is an ExceptionResource, as a file is.
//
// A symbolic link at the file's name (a settings file kept elsewhere) is
// followed: the file it points to is written, and the link stays. A link
// that points nowhere is an error, never replaced by a file.

#include "plugins/preferences/preferences_document.h"

#include "qvimanager/components/component_creator.h"
#include "qvimanager/instruments/exception_qvi_module.h"
#include "qvimanager/instruments/interfaces/preferences.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using PreferencesStore::Document;
using PreferencesStore::FormatError;
using Utilities::String;

[[noreturn]] void Fail(const std::string& detail)
{
    throw QVIManager::ExceptionQVIModule(String("Preferences"), String(detail));
}

[[noreturn]] void FailOnFile(const std::string& path, const std::string& doing)
{
    Fail(path + ": " + doing + ": " + std::strerror(errno));
}

std::string Bytes(const String& text)
{
    return std::string(text.GetCharPointer(), text.Length());
}

std::string Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string FilePath()
{
    const std::string chosen = Variable("QVIMANAGER_PREFERENCES");
    if (!chosen.empty()) {
        return chosen;
    }
    const std::string config = Variable("XDG_CONFIG_HOME");
    if (!config.empty() && config[0] == '/') {
        return config + "/qvimanager/preferences.ini";
    }
    std::string home = Variable("HOME");
    if (home.empty()) {
        const passwd* const account = getpwuid(getuid());
        if (account != nullptr && account->pw_dir != nullptr) {
            home = account->pw_dir;
        }
    }
    if (home.empty()) {
        Fail("no place for the file: neither QVIMANAGER_PREFERENCES, XDG_CONFIG_HOME nor HOME is set");
    }
    return home + "/.config/qvimanager/preferences.ini";
}

// The file a write goes to: `path`, or the file a symbolic link there
// points to.
std::string Followed(const std::string& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
        return path;
    }
    char* const target = realpath(path.c_str(), nullptr);
    if (target == nullptr) {
        FailOnFile(path, "cannot follow the symbolic link");
    }
    const std::string followed(target);
    std::free(target);
    return followed;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Closes a descriptor when it goes.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : fd(descriptor) {}
    ~Descriptor()
    {
        if (fd >= 0) {
            close(fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    // Closes it now, keeping errno of a failure.
    int Close()
    {
        const int result = close(fd);
        fd = -1;
        return result;
    }

    int fd;
};

// The file's bytes into `text`, and its permission bits into `mode`; false
// when there is no file.
bool ReadFile(const std::string& path, std::string& text, mode_t& mode)
{
    // Not blocking: a FIFO at the file's place must not hold the caller
    // until someone writes to it (it is refused below).
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.fd < 0) {
        if (errno == ENOENT) {
            return false;
        }
        FailOnFile(path, "cannot open it");
    }
    struct stat status {};
    if (fstat(file.fd, &status) != 0) {
        FailOnFile(path, "cannot read it");
    }
    if (S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        FailOnFile(path, "cannot read it");
    }
    // A FIFO, a device or a socket could block or never end.
    if (!S_ISREG(status.st_mode)) {
        Fail(path + ": cannot read it: not a regular file");
    }
    mode = status.st_mode & 07777;
    text.clear();
    char buffer[65536];
    for (;;) {
        const ssize_t got = read(file.fd, buffer, sizeof buffer);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            FailOnFile(path, "cannot read it");
        }
        if (got == 0) {
            return true;
        }
        text.append(buffer, static_cast<std::size_t>(got));
    }
}

Document Parsed(const std::string& path, const std::string& text)
{
    try {
        return Document::Parse(text);
    } catch (const FormatError& error) {
        Fail(path + ", line " + std::to_string(error.line) + ": " + error.what);
    }
}

// Makes the folder and those above it that are missing.
void MakeFolders(const std::string& folder)
{
    struct stat status {};
    if (stat(folder.c_str(), &status) == 0) {
        return;
    }
    const std::string above = FolderOf(folder);
    if (above != folder) {
        MakeFolders(above);
    }
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        FailOnFile(folder, "cannot make the folder");
    }
}

void WriteAll(int fd, const std::string& text, const std::string& path)
{
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            FailOnFile(path, "cannot write it");
        }
        done += static_cast<std::size_t>(written);
    }
}

// Writes `text` to `temporary`, flushed to the disk, and renames it to
// `path`; removes the temporary file when that fails. `keep`: the permission
// bits of the file it replaces, or null for a new file.
void Replace(const std::string& path, const std::string& temporary, const std::string& text, const mode_t* keep)
{
    Descriptor file(open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (file.fd < 0) {
        FailOnFile(temporary, "cannot create it");
    }
    try {
        if (keep != nullptr && fchmod(file.fd, *keep) != 0) {
            FailOnFile(temporary, "cannot set its permissions");
        }
        WriteAll(file.fd, text, temporary);
        if (fsync(file.fd) != 0) {
            FailOnFile(temporary, "cannot flush it to the disk");
        }
        if (file.Close() != 0) {
            FailOnFile(temporary, "cannot close it");
        }
        if (rename(temporary.c_str(), path.c_str()) != 0) {
            FailOnFile(path, "cannot replace it");
        }
    } catch (...) {
        unlink(temporary.c_str());
        throw;
    }
}

void FlushFolder(const std::string& folder)
{
    const Descriptor directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.fd < 0 || fsync(directory.fd) != 0) {
        FailOnFile(folder, "cannot flush the folder to the disk");
    }
}

class PreferencesFile : public QVIManager::Preferences {
public:
    static Utilities::Map<String, Utilities::Anything> GetDescriptor()
    {
        return Utilities::MakeComponentDescriptor("Preferences", "$Revision: 1.0 $", "QVIManager");
    }

    String GetValue(const String& section, const String& key, const String& defaultValue) override
    {
        const std::string path = FilePath();
        std::string text;
        mode_t mode = 0;
        if (!ReadFile(path, text, mode)) {
            return defaultValue;
        }
        const Document document = Parsed(path, text);
        const std::string* const value = document.Find(Bytes(section), Bytes(key));
        return value == nullptr ? defaultValue : String(*value);
    }

    void SetValue(const String& section, const String& key, const String& value) override
    {
        const std::string path = Followed(FilePath());
        const std::string folder = FolderOf(path);
        MakeFolders(folder);

        const std::string lockPath = path + ".lock";
        const Descriptor lock(open(lockPath.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0644));
        if (lock.fd < 0) {
            FailOnFile(lockPath, "cannot open the lock file");
        }
        while (flock(lock.fd, LOCK_EX) != 0) {
            if (errno != EINTR) {
                FailOnFile(lockPath, "cannot lock it");
            }
        }
        // Under the lock: what another writer stored last is kept.
        std::string text;
        mode_t mode = 0;
        const bool exists = ReadFile(path, text, mode);
        Document document = Parsed(path, text);
        document.Set(Bytes(section), Bytes(key), Bytes(value));
        const std::string changed = document.Text();
        if (exists && changed == text) {
            return;
        }
        Replace(path, path + ".tmp", changed, exists ? &mode : nullptr);
        FlushFolder(folder);
        // Closing the lock file unlocks it.
    }
};

Utilities::ComponentCreatorNormal<PreferencesFile> creator;

} // namespace

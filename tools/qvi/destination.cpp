#include "tools/qvi/destination.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "cgats/cgats.h"
#include "tools/qvi/output.h"

namespace Qvi {

namespace {

std::string DirectoryOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string BaseName(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

Destination::Destination(std::string target, std::string givenBy)
    : path(target == "-" ? std::string() : std::move(target)), option(std::move(givenBy))
{
}

void Destination::Check(const std::vector<std::string>& inputs) const
{
    if (path.empty()) {
        return;
    }
    struct stat target {};
    if (stat(path.c_str(), &target) != 0) {
        if (errno != ENOENT) {
            throw Cgats::Error(path, 0, "cannot write the file: " + SystemReason());
        }
        // A dangling link is written through: its target's directory counts.
        struct stat link {};
        if (lstat(path.c_str(), &link) == 0) {
            return;
        }
        // A new file: its directory must take it.
        const std::string parent = DirectoryOf(path);
        if (access(parent.c_str(), W_OK) != 0) {
            throw Cgats::Error(path, 0, "cannot write the file: " + parent + ": " + SystemReason());
        }
        return;
    }
    if (S_ISDIR(target.st_mode)) {
        throw Cgats::Error(path, 0, "is a directory; " + option + " needs a file name");
    }
    if (access(path.c_str(), W_OK) != 0) {
        // A file closed to writing stays as it is, though its directory
        // would let a new file take its name.
        throw Cgats::Error(path, 0, "cannot write the file: " + SystemReason());
    }
    if (!S_ISREG(target.st_mode)) {
        return;
    }
    for (const std::string& input : inputs) {
        struct stat source {};
        const bool known = input == "-" ? fstat(STDIN_FILENO, &source) == 0 : stat(input.c_str(), &source) == 0;
        if (known && S_ISREG(source.st_mode) && source.st_dev == target.st_dev && source.st_ino == target.st_ino) {
            const std::string name = input == "-" ? "standard input" : input;
            throw Cgats::Error(path, 0,
                               "is the input file " + name + "; " + option +
                                   " must name another file, or the input would be lost");
        }
    }
}

void Destination::Write(const std::function<void(std::ostream&)>& write) const
{
    if (path.empty()) {
        std::cout.sync_with_stdio(false);
        write(std::cout);
        std::cout.flush();
        if (!std::cout) {
            throw Cgats::Error("<stdout>", 0, "cannot write standard output");
        }
        return;
    }
    struct stat link {};
    if (lstat(path.c_str(), &link) != 0) {
        if (errno != ENOENT) {
            throw Cgats::Error(path, 0, "cannot write the file: " + SystemReason());
        }
        Replace(write, false, 0, 0, 0);
        return;
    }
    if (S_ISREG(link.st_mode)) {
        Replace(write, true, link.st_mode & 07777u, link.st_uid, link.st_gid);
        return;
    }
    if (S_ISDIR(link.st_mode)) {
        throw Cgats::Error(path, 0, "is a directory; " + option + " needs a file name");
    }
    // A link, a device, a FIFO, a socket: written through.
    Through(write);
}

void Destination::Replace(const std::function<void(std::ostream&)>& write, bool exists, unsigned mode, unsigned owner,
                          unsigned group) const
{
    std::string temporary = DirectoryOf(path) + "/." + BaseName(path) + ".qvi-XXXXXX";
    SignalGuard guard;
    const int descriptor = CreateGuardedFile(temporary, guard);
    if (descriptor < 0) {
        if (exists && (errno == EACCES || errno == EPERM)) {
            // The directory is closed to new files, the file itself may not
            // be: it is written in place, as any editor would.
            Through(write);
            return;
        }
        throw Cgats::Error(path, 0, "cannot write the file: " + SystemReason());
    }
    const auto fail = [&](const std::string& reason) {
        close(descriptor);
        std::remove(temporary.c_str());
        throw Cgats::Error(path, 0, "cannot write the file: " + reason);
    };
    if (!exists) {
        const mode_t mask = umask(0);
        umask(mask);
        mode = 0666u & ~static_cast<unsigned>(mask);
    }
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out) {
            fail(SystemReason());
        }
        write(out);
        out.flush();
        if (!out) {
            fail(SystemReason());
        }
    }
    if (exists && fchown(descriptor, owner, group) != 0) {
        // Only a privileged process may give a file away; the new file then
        // belongs to whoever runs qvi.
    }
    if (fchmod(descriptor, static_cast<mode_t>(mode)) != 0 || fsync(descriptor) != 0) {
        fail(SystemReason());
    }
    close(descriptor);
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        const std::string reason = SystemReason();
        std::remove(temporary.c_str());
        throw Cgats::Error(path, 0, "cannot write the file: " + reason);
    }
}

void Destination::Through(const std::function<void(std::ostream&)>& write) const
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) {
        throw Cgats::Error(path, 0, "cannot write the file: " + SystemReason());
    }
    write(out);
    out.flush();
    if (!out) {
        throw Cgats::Error(path, 0, "cannot write the file: " + SystemReason());
    }
}

} // namespace Qvi

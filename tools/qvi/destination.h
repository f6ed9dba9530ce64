#ifndef QVIMANAGER_TOOLS_QVI_DESTINATION_H
#define QVIMANAGER_TOOLS_QVI_DESTINATION_H

// Where qvi writes a result: standard output, or a file the user named.
//
// A user's files are never written over by surprise:
// - a regular file is replaced as a whole, atomically: the result goes to a
//   temporary file in the same directory, which then takes the name, with
//   the mode (and, where the process may, the owner) of the file it
//   replaces; a new file gets the mode 0666 less the umask;
// - a symbolic link is written through: the file it points to receives the
//   result in place and the link stays;
// - a device, a FIFO or a socket is opened and written to, never replaced;
// - a directory, a file the user may not write, and a file that is one of
//   the run's inputs (by identity, whatever the path says), are refused
//   before anything is computed.
// Failures raise Cgats::Error with the path and the system's reason.

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace Qvi {

class Destination {
public:
    // `path` "" or "-" is standard output. `option` names the option that
    // gave the path, for messages ("--output").
    Destination(std::string path, std::string option);

    bool IsStandardOutput() const { return path.empty(); }
    const std::string& Path() const { return path; }

    // Refuses a directory, a new file whose directory does not exist or may
    // not be written, a file that may not be written, and a file that is one
    // of `inputs` ("-" is standard input, compared when it is a regular
    // file).
    void Check(const std::vector<std::string>& inputs) const;

    // Writes what `write` produces.
    void Write(const std::function<void(std::ostream&)>& write) const;

private:
    void Replace(const std::function<void(std::ostream&)>& write, bool exists, unsigned mode, unsigned owner,
                 unsigned group) const;
    void Through(const std::function<void(std::ostream&)>& write) const;

    std::string path;
    std::string option;
};

} // namespace Qvi

#endif

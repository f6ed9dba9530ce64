#ifndef QVIMANAGER_DIAGNOSTICS_WIN_DEBUG_PUBLISHER_H
#define QVIMANAGER_DIAGNOSTICS_WIN_DEBUG_PUBLISHER_H

// WinDebugPublisher: the library's publisher. It writes each line to the
// file "DebugOutput.txt" in the working directory of the moment it is made;
// the file is emptied then, so each run starts a new one. Every line is
// flushed at once, so the file holds all that was traced even when the
// process dies. If the file cannot be opened, the lines are lost without a
// word.
//
// A singleton, made by the first trace object with the delete flag set: the
// kit deletes it at the end of the process.
//
// Threads: Instance, Publish and the destructor run under PoolGuard()
// (memory_manager.h). The destructor leaves the kit before it closes the
// file, so that no other thread writes to a publisher that is half gone,
// and clears the instance pointer, so that a later Instance makes a new one.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/publisher.h"

#include <fstream>

namespace Diagnostics {

class WinDebugPublisher : public StringPublisher {
public:
    static WinDebugPublisher& Instance();

    ~WinDebugPublisher() override;

    using StringPublisher::Publish;
    // Writes the text and a newline, and flushes.
    void Publish(const String& text) override;

private:
    // Opens "DebugOutput.txt" for output, which empties it.
    WinDebugPublisher();

    std::ofstream output;

    static WinDebugPublisher* amInstance;
};

} // namespace Diagnostics

#endif

#ifndef QVIMANAGER_DIAGNOSTICS_PUBLISHER_H
#define QVIMANAGER_DIAGNOSTICS_PUBLISHER_H

// Publisher: where log items go. A publisher registers with the
// DiagnosticKit when it is made and leaves it when it is destroyed; in
// between the kit hands it every log item. A publisher made with the delete
// flag set deletes itself when it is unregistered other than by its own
// destructor, which happens when the kit is deleted at the end of the
// process: such a publisher must be made with new.
//
// The class also decides which functions are traced, from two filter files
// in the working directory, "PackageDiagnosticsFilter.txt" and
// "ClassDiagnosticsFilter.txt": one name per line. By default a function
// whose package or class is listed is not traced. A line containing
// "{ShowOnly}", in either file, turns this round for both: then only the
// functions whose package or class is listed are traced. The files are read
// once, at the first decision, and a change to them after that is not seen
// (until a publisher's destructor drops the lists; the next decision reads
// them again, while a "{ShowOnly}" once seen stays in force).
//
// Threads: registration, the filter lists and the show-only flag are used
// under PoolGuard() (memory_manager.h); the kit calls Publish under it
// too. A derived publisher that other threads may reach while it is made or
// destroyed must hold PoolGuard() across its construction, and leave the
// kit (DiagnosticKit::UnregisterPublisher(this)) first thing in its
// destructor, so that no item reaches it half made or half gone.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/diagnostic_vector.h"

namespace Diagnostics {

class DiagnosticKit;
class LogItem;

class Publisher {
public:
    // Virtual operations in slot order.
    virtual void Publish(const LogItem& item) = 0;
    // Leaves the kit, unless UnregisterPublisher is running already, and
    // deletes both filter lists, leaving their pointers null.
    virtual ~Publisher();

    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    // Reads "PackageDiagnosticsFilter.txt" into the package list, then
    // "ClassDiagnosticsFilter.txt" into the class list, both from the
    // working directory ("/" and the file name appended to it). A file that
    // cannot be opened leaves its list as it is, without a word; so does a
    // working directory that cannot be found.
    //
    // Each line, up to its newline, is stored as the next entry, from entry
    // 0 on; a list whose size is not above the next index grows by 2 first.
    // A line keeps its first 255 characters; the rest of a longer line is
    // skipped. A carriage return right before the newline is dropped, as
    // the text-mode reading of the files' original platform did. The line
    // "{ShowOnly}" is stored like any other, and so is the empty line that
    // reading past a final newline gives (an empty file gives one such
    // line). A line containing "{ShowOnly}" sets the show-only flag.
    //
    // Called on its own before any decision, it first makes the two lists
    // as the first decision does.
    static void ReadDiagnosticsPublishFilter();

    // Whether the names are listed, turned round in show-only mode. On the
    // first call it makes both lists, with 20 empty entries each, and reads
    // the files. A name is listed when it equals an entry of its list: the
    // whole text, case-sensitive ("Class " and "class" do not match
    // "Class"). An empty name matches nothing, so the empty entries (unused
    // ones and stored empty lines) match nothing either: a free function,
    // whose class name is empty, is traced by default and not traced in
    // show-only mode unless its package is listed.
    static bool MatchWithDiagnosticsFilter(const String& package, const String& className);

protected:
    // Stores the delete flag and registers with the kit.
    explicit Publisher(bool deleteOnUnregister);

    // The filter lists (null until the first decision) and the show-only
    // flag, false at load and set for good by a "{ShowOnly}" line. Read
    // them only while holding PoolGuard().
    static Vector<String>* psmPackageFilterNames;
    static Vector<String>* psmClassFilterNames;
    static bool amShowOnly;

private:
    friend class DiagnosticKit;

    void RegisterPublisher();
    // Leaves the kit and, if the delete flag is set and the destructor is
    // not running, deletes the publisher.
    void UnregisterPublisher();

    bool deleteOnUnregister;
    bool unregistering;
    bool destructing;
};

// A publisher of text lines: it turns each item into its line with
// LogItem::ToString and passes that on.
class StringPublisher : public Publisher {
public:
    // Virtual operations in slot order.
    void Publish(const LogItem& item) override;
    ~StringPublisher() override;
    virtual void Publish(const String& text) = 0;

protected:
    explicit StringPublisher(bool deleteOnUnregister);
};

} // namespace Diagnostics

#endif

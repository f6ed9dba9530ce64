#ifndef QVIMANAGER_TOOLS_QVI_OUTPUT_H
#define QVIMANAGER_TOOLS_QVI_OUTPUT_H

// The results of a qvi run. Rows are collected in a temporary file, not in
// memory, together with the column widths and the row count; only when the
// whole run has succeeded are they written out in the requested format. So
// a failed run writes nothing, and a file of a million rows needs the
// memory of one.

#include <cstdio>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Qvi {

enum class Format { Cgats, Csv, Json, Table };

// Notes tell on standard error how an input was read (its scale, an
// extended wavelength range); --quiet silences them. Warnings are always
// shown.
void SetQuiet(bool quiet);
void Note(const std::string& text);
void Warn(const std::string& text);

// Makes SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGPIPE remove every temporary
// file of the process before the process ends as the signal says. A signal
// that the process was started with ignored stays ignored.
void RemoveTemporaryFilesOnSignals();

// A path removed when the process is ended by one of those signals, until
// the object goes out of scope. Holds at most 16 paths at a time; a path
// beyond that (or longer than 4095 bytes) is simply not guarded.
class SignalGuard {
public:
    SignalGuard() = default;
    explicit SignalGuard(const std::string& path) { Set(path); }
    ~SignalGuard();
    // Guards `path` (the object must not guard one yet).
    void Set(const std::string& path);
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

private:
    int slot = -1;
};

// Creates a file from the mkstemp pattern `path` (which becomes the file's
// name) and guards it, with no signal between the two. Returns the open
// descriptor, or -1 with errno set.
int CreateGuardedFile(std::string& path, SignalGuard& guard);

// The system's text for errno.
std::string SystemReason();

// A number in at most six significant digits, as "%g" writes it (1e+37).
std::string Shortest(double value);

// A temporary file in $TMPDIR (or /tmp), removed when it goes out of scope
// or when a signal ends the process. A directory that does not exist or
// cannot be written raises Cgats::Error with the system's reason.
class TempFile {
public:
    TempFile();
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    const std::string& Path() const { return path; }

private:
    std::string path;
    SignalGuard guard;
};

// A header keyword: a number is written as a number in JSON (null when it
// is empty), anything else as a string.
struct Keyword {
    std::string key;
    std::string value;
    bool number = false;
};

// One line of a summary.
struct SummaryEntry {
    enum class Kind {
        Number, // a JSON number, null when empty
        Text,   // a JSON string
        // The values of column `column` in every row whose column `flag`
        // holds "1": a JSON array of strings, a space-separated list in the
        // other forms (the table shows the first 20 and the count of the
        // rest).
        RowList
    };
    std::string key;
    std::string value;
    Kind kind = Kind::Number;
    std::size_t column = 0;
    std::size_t flag = 0;
};

struct Column {
    std::string name;
    bool text = false;
};

// Empties an open temporary file and rewinds it for writing anew.
void EmptyFile(std::FILE* file);

class ResultSet {
public:
    explicit ResultSet(std::vector<Column> columns);
    ~ResultSet();
    ResultSet(const ResultSet&) = delete;
    ResultSet& operator=(const ResultSet&) = delete;

    // One row; an empty value is a missing one. Any text is kept as it is,
    // tabs and line ends included.
    void Add(const std::vector<std::string>& values);
    // Forgets every row.
    void Clear();
    std::size_t Rows() const { return rows; }
    const std::vector<Column>& Columns() const { return columns; }

    // Header keywords of the CGATS and JSON forms.
    std::vector<Keyword> keywords;
    std::vector<std::string> comments;
    // Printed after the rows of a table and as the "summary" object of
    // JSON. CGATS carries a summary as keywords, and CSV holds the table
    // only: WriteSummary writes the summary elsewhere.
    std::vector<SummaryEntry> summary;

    void Write(Format format, std::ostream& output);
    // The summary as "key: value" lines, lists in full.
    void WriteSummary(std::ostream& output);

    // Reads the rows back one at a time, values as they were added.
    template <typename Function>
    void ForEachRow(Function function);

private:
    void Rewind();
    bool ReadRow(std::vector<std::string>& values);
    // The full text of a summary entry (a RowList's ids, blank-separated).
    std::string SummaryText(const SummaryEntry& entry, std::size_t limit);

    std::vector<Column> columns;
    // Widths of the table form, in the characters it shows.
    std::vector<std::size_t> widths;
    std::size_t rows = 0;
    TempFile spool;
    std::FILE* file = nullptr;
    // The spooled form of the row that Add writes.
    std::string line;
    // Whether a spooled value holds an escape (else rows read back as they
    // are).
    bool escaped = false;
    // getline's buffer for ReadRow.
    char* lineData = nullptr;
    std::size_t lineCapacity = 0;
};

template <typename Function>
void ResultSet::ForEachRow(Function function)
{
    Rewind();
    std::vector<std::string> values;
    while (ReadRow(values)) {
        function(values);
    }
}

// Writes `number` with `decimals` decimals; "-0.000" becomes "0.000". A
// value that is not finite becomes the empty (missing) value; the commands
// refuse such results before they get here.
std::string FormatNumber(double number, int decimals);

// A text as the table form shows it: a tab as \t, line ends as \n and \r.
std::string Visible(const std::string& text);

} // namespace Qvi

#endif

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

// A temporary file that is removed when it goes out of scope.
class TempFile {
public:
    TempFile();
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    const std::string& Path() const { return path; }

private:
    std::string path;
};

// One line of a summary; `text` values are JSON strings, the others numbers.
struct SummaryEntry {
    std::string key;
    std::string value;
    bool text = false;
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

    // One row; an empty value is a missing one.
    void Add(const std::vector<std::string>& values);
    // Forgets every row.
    void Clear();
    std::size_t Rows() const { return rows; }
    const std::vector<Column>& Columns() const { return columns; }

    // Header keywords of the CGATS form (and the summary of the others).
    std::vector<std::pair<std::string, std::string>> keywords;
    std::vector<std::string> comments;
    // Lines printed after the rows (table and CSV) or as a "summary" object
    // (JSON; the pairs).
    std::vector<SummaryEntry> summary;

    void Write(Format format, std::ostream& output);

    // Reads the rows back one at a time (for summaries).
    template <typename Function>
    void ForEachRow(Function function);

private:
    void Rewind();
    bool ReadRow(std::vector<std::string>& values);

    std::vector<Column> columns;
    std::vector<std::size_t> widths;
    std::size_t rows = 0;
    TempFile spool;
    std::FILE* file = nullptr;
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
// value that is not finite becomes the empty (missing) value.
std::string FormatNumber(double number, int decimals);

} // namespace Qvi

#endif

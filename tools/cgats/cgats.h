#ifndef QVIMANAGER_TOOLS_CGATS_CGATS_H
#define QVIMANAGER_TOOLS_CGATS_CGATS_H

// Reading and writing CGATS.17 measurement files, row by row.
//
// A file is a first line that names it ("CGATS.17", "CTI3", ...), header
// lines of a keyword and a value, a BEGIN_DATA_FORMAT ... END_DATA_FORMAT
// block of field names, and a BEGIN_DATA ... END_DATA block of one row per
// line. The reader accepts what real files contain: a UTF-8 byte-order
// mark, comment lines ("#"), quoted strings with blanks or tabs, unknown
// keywords, tabs or spaces, CRLF line ends, fields in any order and extra
// fields. It reads one line at a time,
// so a file of any size takes the memory of one row.
//
// Every failure raises Cgats::Error with the file name and line number
// (line 0 for a failure that concerns the whole file).

#include <cstddef>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Cgats {

class Error : public std::runtime_error {
public:
    Error(const std::string& file, std::size_t line, const std::string& message);
    const std::string& File() const { return file; }
    std::size_t Line() const { return line; }
    // The message without file and line.
    const std::string& Message() const { return message; }

private:
    std::string file;
    std::size_t line;
    std::string message;
};

// One data row: its values as written (quotes removed), valid until the next
// call of Reader::Next, and the line it came from.
struct Row {
    std::vector<std::string_view> values;
    std::size_t line = 0;
};

class Reader {
public:
    // Reads the header up to and including BEGIN_DATA. `name` is the file
    // name used in error messages.
    Reader(std::istream& input, std::string name);

    const std::string& Name() const { return name; }
    // The first line's identifier, e.g. "CGATS.17".
    const std::string& Identifier() const { return identifier; }
    // Header keywords and their values (quotes removed) in file order.
    const std::vector<std::pair<std::string, std::string>>& Keywords() const { return keywords; }
    // The value of a keyword, or an empty string.
    std::string Keyword(std::string_view key) const;
    const std::vector<std::string>& Fields() const { return fields; }
    // The index of a field (exact name), or -1.
    int FieldIndex(std::string_view field) const;
    // The line of END_DATA_FORMAT (of the last format line).
    std::size_t FormatLine() const { return formatLine; }

    // The next data row; false at END_DATA or the end of the input. A row
    // whose number of values differs from the number of fields raises Error.
    bool Next(Row& row);

private:
    bool ReadLine();
    [[noreturn]] void Fail(const std::string& message) const;

    std::istream& input;
    std::string name;
    std::string identifier;
    std::vector<std::pair<std::string, std::string>> keywords;
    std::vector<std::string> fields;
    std::size_t formatLine = 0;
    std::string buffer;
    std::size_t lineNumber = 0;
    bool finished = false;
};

// Splits a line into tokens at blanks and tabs; a double-quoted token keeps
// its blanks and loses its quotes; a "#" that starts a token ends the line.
// The views point into `line`.
void Tokenize(std::string_view line, std::vector<std::string_view>& tokens);

// Parses a finite number written with a decimal point or a decimal comma,
// with an optional sign. False for anything else (trailing characters,
// "inf", "nan", a value out of range).
bool ParseNumber(std::string_view text, double& value);
// The same, rounded once to the nearest float.
bool ParseNumber(std::string_view text, float& value);
// Both at once, for a reader that needs the double and the float of the same
// text: the result is that of the double form; `single` tells whether the
// float form succeeded too (a number can fit a double but not a float, as
// 1e39). A plain decimal is read once for both.
bool ParseNumber(std::string_view text, double& value, float& singleValue, bool& single);

// True when the text is written as a decimal number ([+-]digits, an
// optional point or comma with digits, an optional exponent), whatever its
// magnitude: a text that ParseNumber refuses although this holds is a
// number out of range, as 1e400.
bool IsWrittenNumber(std::string_view text);

// The wavelength in nm that a field name stands for: "SPECTRAL_NM380",
// "SPECTRAL_NM_380", "SPECTRAL_380", "NM380", "nm380" (any case) give 380;
// any other name gives 0.
int SpectralWavelength(std::string_view field);

// Writes a CGATS.17 file. The number of rows must be known before the
// first one.
class Writer {
public:
    explicit Writer(std::ostream& output);
    // The first line, keywords (a value is quoted unless it is a number),
    // comment lines, NUMBER_OF_FIELDS, the data format, NUMBER_OF_SETS and
    // BEGIN_DATA. Keywords other than the standard ones are declared with
    // KEYWORD first.
    void Begin(const std::string& identifier, const std::vector<std::pair<std::string, std::string>>& keywords,
               const std::vector<std::string>& comments, const std::vector<std::string>& fields,
               std::size_t rows);
    // One row; a value flagged as text is written in double quotes.
    void WriteRow(const std::vector<std::string>& values, const std::vector<bool>& text);
    void End();

private:
    std::ostream& output;
};

// Quotes text for a CGATS file: inner double quotes become single quotes
// and line ends blanks; a tab stays (the reader keeps it inside quotes).
std::string Quote(std::string_view text);

} // namespace Cgats

#endif

#ifndef QVIMANAGER_PLUGINS_PREFERENCES_PREFERENCES_DOCUMENT_H
#define QVIMANAGER_PLUGINS_PREFERENCES_PREFERENCES_DOCUMENT_H

// The text of a preferences file, read and changed in memory.
//
// The file is made of lines ending in LF (a CR before the LF is part of the
// line ending; the last line may lack its LF):
//
//   # a comment                   first non-blank character '#' or ';'
//   [section]                     a section: the keys below belong to it
//   key=value                     a key of the section above
//                                 blank lines (spaces and tabs only)
//
// Blanks (spaces and tabs) around a section's name, a key and a value are
// not part of them: "  key  =  value  " is the key "key" with the value
// "value". A key line splits at its first '=' that no backslash escapes.
// Comments stand on lines of their own: "key=v # c" has the value "v # c".
// Every other byte stands for itself, UTF-8 and other bytes from 128 on
// included; a raw NUL byte anywhere makes the file corrupt.
//
// Escapes, read alike in section names, keys and values:
//
//   \\  backslash            \n  LF          \r  CR          \t  tab
//   \s  space                \=  '='         \[  '['         \]  ']'
//   \#  '#'                  \;  ';'         \xHH  the byte of the two hex digits HH (either case)
//
// Any other character after a backslash, a backslash at the end of a line
// and \x without two hex digits make the file corrupt. Written text uses
// the fewest escapes that keep it: always \\, \n, \r, \t and \xHH for the
// other bytes below 32 and for 127 (\x00 for NUL); \s for the spaces at
// the start and at the end; in keys \= for every '=' and \[, \# or \; for
// such a first character; in section names \] for every ']'. So every byte
// string comes back as it was written, the empty one included ("[]",
// "=value", "key=").
//
// Section names and keys compare without regard to the case of ASCII
// letters ("RUbaudrate" is "RUBaudRate"); bytes from 128 on compare as
// they are. The first section of a name and, in it, the first line of a key
// count; a later section of the same name continues it, a later line of the
// same key is kept but never read. A key keeps the spelling of its first
// write.
//
// A rewrite keeps every line it does not change byte for byte, comments
// and blank lines included (a last line without its LF gets one): a new
// value replaces its key's line (written anew as "key=value"), a new key
// goes behind the last key of its section, a new section at the end,
// behind a blank line. The lines it writes end in LF alone.
//
// A line that is none of these (a key line without '=', a section without
// its ']' or with text behind it, a key before the first section) makes the
// file corrupt; Parse then says which line and why.

#include <cstddef>
#include <string>
#include <vector>

namespace PreferencesStore {

// What Parse finds wrong: the line (counted from 1) and what is wrong with
// it.
struct FormatError {
    std::size_t line;
    std::string what;
};

// What a text is written as: section names, keys and values need different
// escapes.
enum class Field { Section, Key, Value };

// `text` as it is written in the file for `field`.
std::string Escape(const std::string& text, Field field);

class Document {
public:
    // The file's text; throws FormatError when it is corrupt. The empty text
    // is an empty document.
    static Document Parse(const std::string& text);

    // The value of `key` in `section`, or null. Valid until the next Set.
    const std::string* Find(const std::string& section, const std::string& key) const;
    // Gives `key` in `section` the value `value`, adding the key and the
    // section as needed.
    void Set(const std::string& section, const std::string& key, const std::string& value);

    // The file's text: the lines, each with its LF.
    std::string Text() const;

private:
    enum class Kind { Other, Section, Key };
    struct Line {
        // As in the file, without the LF.
        std::string text;
        Kind kind;
        // The section's name or the key, unescaped.
        std::string name;
        // The key's value, unescaped.
        std::string value;
    };

    // The first line of `key` in `section`, or lines.size().
    std::size_t FindLine(const std::string& section, const std::string& key) const;

    std::vector<Line> lines;
};

} // namespace PreferencesStore

#endif

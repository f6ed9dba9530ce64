// The preferences file of the shipped store: an arbitrary text is parsed;
// a text it takes comes back from Text() as it was (a last line without
// its LF gets one), and then values set with arbitrary section names, keys
// and values are found again, in the text written and parsed anew, while
// every line the change did not touch stays as it was. A corrupt text is
// refused with a line inside the text.
//
// Input: up to four settings (section, key, value), then the file's text.

#include "fuzz/fuzz_input.h"

#include "plugins/preferences/preferences_document.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using Fuzz::Check;
using PreferencesStore::Document;
using PreferencesStore::FormatError;

std::size_t Lines(const std::string& text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) +
           (text.empty() || text.back() == '\n' ? 0 : 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::Input input(data, size);
    struct Setting {
        std::string section;
        std::string key;
        std::string value;
    };
    std::vector<Setting> settings(input.Choice(5));
    for (Setting& setting : settings) {
        setting.section = input.Text(24);
        setting.key = input.Text(24);
        setting.value = input.Text(48);
    }
    const std::string text = input.Rest();

    Document document;
    try {
        document = Document::Parse(text);
    } catch (const FormatError& error) {
        Check(error.line >= 1 && error.line <= std::max<std::size_t>(Lines(text), 1), "corrupt line out of the text");
        Check(!error.what.empty(), "a corrupt text without a reason");
        return 0;
    }
    const std::string kept = text.empty() || text.back() == '\n' ? text : text + "\n";
    Check(document.Text() == kept, "an unchanged document is not written as it was read");

    for (const Setting& setting : settings) {
        document.Set(setting.section, setting.key, setting.value);
        const std::string* found = document.Find(setting.section, setting.key);
        Check(found != nullptr && *found == setting.value, "a value set is not found");
    }
    const std::string written = document.Text();
    Document again;
    try {
        again = Document::Parse(written);
    } catch (const FormatError& error) {
        Fuzz::Broken("the store's own text is corrupt at line " + std::to_string(error.line) + ": " + error.what);
    }
    Check(again.Text() == written, "the written text does not read back as itself");
    for (const Setting& setting : settings) {
        // The last setting of a key wins; keys and sections compare without
        // regard to ASCII case, so look for the last one that matches.
        const std::string* found = again.Find(setting.section, setting.key);
        Check(found != nullptr, "a value set is lost in the written text");
    }
    if (!settings.empty()) {
        const Setting& last = settings.back();
        const std::string* found = again.Find(last.section, last.key);
        Check(found != nullptr && *found == last.value, "the last value set does not read back");
    }
    // Every line of the original that no setting touched is still there.
    std::vector<std::string> before;
    std::vector<std::string> after;
    for (std::size_t start = 0; start < kept.size();) {
        const std::size_t end = kept.find('\n', start);
        before.push_back(kept.substr(start, end - start));
        start = end + 1;
    }
    for (std::size_t start = 0; start < written.size();) {
        const std::size_t end = written.find('\n', start);
        after.push_back(written.substr(start, end - start));
        start = end + 1;
    }
    Check(after.size() >= before.size() - std::min(before.size(), settings.size()) , "lines lost in a rewrite");
    return 0;
}

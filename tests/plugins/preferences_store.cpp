// Test "Preferences" stores, one per build of this file: PREFERENCES_NO_CASE
// compares keys without regard to case, the other build respects case. The
// values live in memory and, when the environment variable
// QVI_TEST_PREFERENCES names a file, in that file too (one
// "section<TAB>key<TAB>value" per line), so that a second process finds
// them.

#include "qvimanager/components/component_creator.h"
#include "tests/plugins/instrument_probe.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

std::string Folded(std::string key)
{
#if defined(PREFERENCES_NO_CASE)
    std::transform(key.begin(), key.end(), key.begin(), [](unsigned char c) { return std::tolower(c); });
#endif
    return key;
}

struct Entry {
    std::string section;
    std::string key;
    std::string value;
};

class Store : public TestPlugins::PreferencesProbe {
public:
    Store()
    {
        const char* file = std::getenv("QVI_TEST_PREFERENCES");
        if (file == nullptr) {
            return;
        }
        path = file;
        std::ifstream in(path);
        std::string line;
        while (std::getline(in, line)) {
            const std::size_t first = line.find('\t');
            const std::size_t second = line.find('\t', first + 1);
            if (first != std::string::npos && second != std::string::npos) {
                entries.push_back({line.substr(0, first), line.substr(first + 1, second - first - 1),
                                   line.substr(second + 1)});
            }
        }
    }
    static Map<String, Anything> GetDescriptor()
    {
        return Utilities::MakeComponentDescriptor("Preferences", "$Revision: 1.0 $", PREFERENCES_CATEGORY);
    }
    String GetValue(const String& section, const String& key, const String& defaultValue) override
    {
        for (const Entry& entry : entries) {
            if (entry.section == section.GetCharPointer() && Folded(entry.key) == Folded(key.GetCharPointer())) {
                return String(entry.value.c_str());
            }
        }
        return defaultValue;
    }
    void SetValue(const String& section, const String& key, const String& value) override
    {
        bool replaced = false;
        for (Entry& entry : entries) {
            if (entry.section == section.GetCharPointer() && Folded(entry.key) == Folded(key.GetCharPointer())) {
                entry.value = value.GetCharPointer();
                replaced = true;
            }
        }
        if (!replaced) {
            entries.push_back({section.GetCharPointer(), key.GetCharPointer(), value.GetCharPointer()});
        }
        if (!path.empty()) {
            std::ofstream out(path, std::ios::trunc);
            for (const Entry& entry : entries) {
                out << entry.section << '\t' << entry.key << '\t' << entry.value << '\n';
            }
        }
    }
    std::string Contents() override
    {
        std::string text;
        for (const Entry& entry : entries) {
            text += entry.section + "/" + entry.key + "=" + entry.value + "\n";
        }
        return text;
    }

private:
    std::string path;
    std::vector<Entry> entries;
};

Utilities::ComponentCreatorSingleton<Store> creator;

} // namespace

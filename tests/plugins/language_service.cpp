// A "LanguageService" for the tests: German words for a few messages of
// the library, and an exception (no translation) for every other text.
//
// Languages: "Deutsch" (the start) translates; "English" translates
// nothing; "Broken" makes every operation but the two translations and
// SetActualLanguage throw. Any other language is refused with an
// exception. Marking starts off.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/language_service.h"
#include "tests/plugins/plugin_probe.h"

#include <cstring>

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;
using Utilities::Vector;

struct Entry {
    const char* english;
    const char* german;
};

const Entry kDictionary[] = {
    {"%VALUE% is not a valid illuminationtype", "%VALUE% ist keine gueltige Lichtart"},
    {"Missing WhiteReference", "Weissbezug fehlt"},
    {"Error: Directory %DIR% does not exist", "Fehler: Verzeichnis %DIR% existiert nicht"},
    {"Specified sort type is not correct", "Die angegebene Sortierart ist nicht korrekt"},
    {"Sort key doesn't exist in all components corresponding to filter settings.",
     "Der Sortierschluessel fehlt in einer Komponente des Filters."},
    {"An unexpected error occured. Error text:", "Ein unerwarteter Fehler ist aufgetreten. Fehlertext:"},
};

class TestLanguageService : public Utilities::LanguageService {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("LanguageService", "$Revision: 1.0 $", "Language");
    }

    String GetTranslation(const String& text) override
    {
        if (language == "Deutsch") {
            for (const Entry& entry : kDictionary) {
                if (std::strcmp(entry.english, text.GetCharPointer()) == 0) {
                    return String(entry.german);
                }
            }
        }
        throw Utilities::ExceptionOutOfBound("No translation");
    }
    void SetActualLanguage(const String& newLanguage) override
    {
        if (!(newLanguage == "Deutsch" || newLanguage == "English" || newLanguage == "Broken")) {
            throw Utilities::ExceptionWrongType(String("Unknown language: ") + newLanguage);
        }
        language = newLanguage;
    }
    String GetActualLanguage() override
    {
        CheckNotBroken();
        return language;
    }
    Vector<String> GetAllLanguages() override
    {
        CheckNotBroken();
        Vector<String> languages(2);
        languages[0] = String("Deutsch");
        languages[1] = String("English");
        return languages;
    }
    String GetReverseTranslation(const String& text) override
    {
        for (const Entry& entry : kDictionary) {
            if (std::strcmp(entry.german, text.GetCharPointer()) == 0) {
                return String(entry.english);
            }
        }
        throw Utilities::ExceptionOutOfBound("No reverse translation");
    }
    void EnableMarking(bool enable) override
    {
        CheckNotBroken();
        marking = enable;
    }
    bool GetEnableMarking() const override
    {
        CheckNotBroken();
        return marking;
    }
    void Initialize() const override
    {
        CheckNotBroken();
    }

private:
    void CheckNotBroken() const
    {
        if (language == "Broken") {
            throw Utilities::ExceptionCalculationProblem("The language service is broken");
        }
    }

    String language = String("Deutsch");
    bool marking = false;
};

// One service for the whole plug-in, so that the language and the marking
// hold for every LanguageServiceInterface.
Utilities::ComponentCreatorSingleton<TestLanguageService> creator;

} // namespace

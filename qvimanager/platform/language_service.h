#ifndef QVIMANAGER_PLATFORM_LANGUAGE_SERVICE_H
#define QVIMANAGER_PLATFORM_LANGUAGE_SERVICE_H

// LanguageService: the interface of the translation component, registered
// under the name "LanguageService". The library contains none; a plug-in
// supplies it, and the library reaches it only through
// LanguageServiceInterface (language_service_interface.h).
//
// Texts are keyed by their English words, as the library raises them
// ("Error: Directory %DIR% does not exist"): the library translates a
// message before it fills the %TOKEN% of its template, so a translation
// keeps the token. A service says that it has no translation for a text by
// throwing an exception of the library's tree.
//
// The virtual operations stand in their slot order, directly behind those
// of Component: implementations in plug-ins rely on it, so do not reorder
// them.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class LanguageService : public Component {
public:
    // Slot 1. The text in the current language; throws when there is none.
    virtual String GetTranslation(const String& text) = 0;
    // Slot 2.
    virtual void SetActualLanguage(const String& language) = 0;
    // Slot 3.
    virtual String GetActualLanguage() = 0;
    // Slot 4.
    virtual Vector<String> GetAllLanguages() = 0;
    // Slot 5. The English key of a translated text; throws when there is
    // none.
    virtual String GetReverseTranslation(const String& text) = 0;
    // Slot 6. Whether a text without translation is shown marked, as
    // "(text)".
    virtual void EnableMarking(bool enable) = 0;
    // Slot 7.
    virtual bool GetEnableMarking() const = 0;
    // Slot 8. A placeholder that keeps the slot: the library never calls
    // it, and its meaning is the implementer's. Does nothing unless
    // overridden.
    virtual void ReservedOperation8() {}
    // Slot 9. Loads what the service needs (its dictionaries).
    virtual void Initialize() const = 0;
};

} // namespace Utilities

#endif

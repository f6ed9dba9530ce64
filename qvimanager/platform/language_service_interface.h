#ifndef QVIMANAGER_PLATFORM_LANGUAGE_SERVICE_INTERFACE_H
#define QVIMANAGER_PLATFORM_LANGUAGE_SERVICE_INTERFACE_H

// The library's door to translation. Messages that the library raises pass
// through GetTranslation first; the untranslated English text is the key of
// the translation.
//
// Translations come from a component named "LanguageService". Without one,
// which is always the case until components can be resolved, both
// operations give back their text unchanged, so messages are raised in
// their literal words. Neither operation ever throws because of the
// service. The object is cheap: make one for each message.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class LanguageServiceInterface {
public:
    LanguageServiceInterface();
    LanguageServiceInterface(const LanguageServiceInterface& other);
    LanguageServiceInterface& operator=(const LanguageServiceInterface& other);
    ~LanguageServiceInterface();

    // The translation of `text`; without a service, `text` itself.
    String GetTranslation(const String& text);
    // The English key of a translated `text`; without a service, `text`
    // itself.
    String GetReverseTranslation(const String& text);

    // A fixed label.
    Diagnostics::String GetValueString() const;
    void Invariant() const {}
};

} // namespace Utilities

#endif

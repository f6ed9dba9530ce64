#ifndef QVIMANAGER_PLATFORM_LANGUAGE_SERVICE_INTERFACE_H
#define QVIMANAGER_PLATFORM_LANGUAGE_SERVICE_INTERFACE_H

// The library's door to translation. Messages that the library raises pass
// through GetTranslation first; the untranslated English text is the key of
// the translation.
//
// Translations come from the component "LanguageService"
// (language_service.h), resolved by the constructor. Without one, both
// translation operations give back their text unchanged, so messages are
// raised in their literal words; the other operations need the service.
// Neither translation operation ever throws because of the service, so any
// text may pass through them. The object costs one resolve: make one for
// each message, or one per thread.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class LanguageService;

class LanguageServiceInterface {
public:
    // Resolves "LanguageService"; without one the object still translates,
    // giving texts back as they are. Once the naming service has been
    // released (late in the life of the process) there is no service
    // either, and a message is still raised in its own words. A service
    // whose constructor throws passes that exception on.
    LanguageServiceInterface();
    // Share the service.
    LanguageServiceInterface(const LanguageServiceInterface& other);
    LanguageServiceInterface& operator=(const LanguageServiceInterface& other);
    ~LanguageServiceInterface();

    // The translation of `text`. Without a service: `text`. When the service
    // throws (it has no translation): "(" text ")" if marking is on, so that
    // untranslated words stand out on a screen, otherwise `text`; and
    // `text` if asking for the marking fails too.
    String GetTranslation(const String& text);
    // The English key of a translated `text`. Without a service, or when the
    // service throws: `text`, never marked.
    String GetReverseTranslation(const String& text);

    // The operations below forward to the service. Without one they throw
    // ExceptionNullpointer with "Failed to access to nullpointer.".
    //
    // An Exception of the service is thrown again as ExceptionOutOfBound
    // with the same text.
    void SetActualLanguage(const String& language);
    String GetActualLanguage();
    Vector<String> GetAllLanguages();
    // Failures of the service are swallowed: EnableMarking then changes
    // nothing, GetEnableMarking gives false.
    void EnableMarking(bool enable);
    bool GetEnableMarking() const;
    // An Exception of the service is thrown again as
    // ExceptionResourceNotAvailable with the same text.
    void Initialize() const;

    // "LanguageServiceInterface".
    Diagnostics::String GetValueString() const;
    void Invariant() const {}

private:
    // Throws "Failed to access to nullpointer." without a service.
    LanguageService& Service() const;

    SmartPointer<LanguageService> service;
};

} // namespace Utilities

#endif

#include "qvimanager/platform/language_service_interface.h"

#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/language_service.h"

namespace Utilities {

LanguageServiceInterface::LanguageServiceInterface() : service()
{
    try {
        service = Resolve<LanguageService>(String("LanguageService"));
    } catch (const ExceptionNamingService&) {
        // The naming service is gone for good: translate nothing.
    }
}

LanguageServiceInterface::LanguageServiceInterface(const LanguageServiceInterface& other) = default;

LanguageServiceInterface& LanguageServiceInterface::operator=(const LanguageServiceInterface& other) = default;

LanguageServiceInterface::~LanguageServiceInterface() = default;

String LanguageServiceInterface::GetTranslation(const String& text)
{
    if (!service.IsValid()) {
        return text;
    }
    try {
        return service->GetTranslation(text);
    } catch (...) {
        // The service has no translation.
        try {
            if (service->GetEnableMarking()) {
                return String("(") + text + String(")");
            }
        } catch (...) {
        }
        return text;
    }
}

String LanguageServiceInterface::GetReverseTranslation(const String& text)
{
    if (!service.IsValid()) {
        return text;
    }
    try {
        return service->GetReverseTranslation(text);
    } catch (...) {
        return text;
    }
}

void LanguageServiceInterface::SetActualLanguage(const String& language)
{
    LanguageService& target = Service();
    try {
        target.SetActualLanguage(language);
    } catch (const Exception& failure) {
        throw ExceptionOutOfBound(failure.GetExceptionText());
    }
}

String LanguageServiceInterface::GetActualLanguage()
{
    LanguageService& target = Service();
    try {
        return target.GetActualLanguage();
    } catch (const Exception& failure) {
        throw ExceptionOutOfBound(failure.GetExceptionText());
    }
}

Vector<String> LanguageServiceInterface::GetAllLanguages()
{
    LanguageService& target = Service();
    try {
        return target.GetAllLanguages();
    } catch (const Exception& failure) {
        throw ExceptionOutOfBound(failure.GetExceptionText());
    }
}

void LanguageServiceInterface::EnableMarking(bool enable)
{
    LanguageService& target = Service();
    try {
        target.EnableMarking(enable);
    } catch (...) {
    }
}

bool LanguageServiceInterface::GetEnableMarking() const
{
    const LanguageService& target = Service();
    try {
        return target.GetEnableMarking();
    } catch (...) {
        return false;
    }
}

void LanguageServiceInterface::Initialize() const
{
    const LanguageService& target = Service();
    try {
        target.Initialize();
    } catch (const Exception& failure) {
        throw ExceptionResourceNotAvailable(failure.GetExceptionText());
    }
}

Diagnostics::String LanguageServiceInterface::GetValueString() const
{
    return Diagnostics::String("LanguageServiceInterface");
}

LanguageService& LanguageServiceInterface::Service() const
{
    // The pointer's own check throws the text.
    return *service.operator->();
}

} // namespace Utilities

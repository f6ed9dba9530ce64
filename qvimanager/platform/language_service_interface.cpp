#include "qvimanager/platform/language_service_interface.h"

namespace Utilities {

LanguageServiceInterface::LanguageServiceInterface() = default;
LanguageServiceInterface::LanguageServiceInterface(const LanguageServiceInterface&) = default;
LanguageServiceInterface& LanguageServiceInterface::operator=(const LanguageServiceInterface&) = default;
LanguageServiceInterface::~LanguageServiceInterface() = default;

String LanguageServiceInterface::GetTranslation(const String& text)
{
    return text;
}

String LanguageServiceInterface::GetReverseTranslation(const String& text)
{
    return text;
}

Diagnostics::String LanguageServiceInterface::GetValueString() const
{
    return Diagnostics::String("LanguageServiceInterface");
}

} // namespace Utilities

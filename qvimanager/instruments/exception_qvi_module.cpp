#include "qvimanager/instruments/exception_qvi_module.h"

#include "qvimanager/platform/language_service_interface.h"

namespace QVIManager {

namespace {

Utilities::String ModuleText(const Utilities::String& module, const Utilities::String& detail)
{
    Utilities::LanguageServiceInterface language;
    Utilities::String text = language.GetTranslation(Utilities::String("Error in "));
    text += module;
    text += ": ";
    if (detail.Length() == 0) {
        text += language.GetTranslation(Utilities::String("No response."));
    } else {
        text += detail;
    }
    return text;
}

} // namespace

ExceptionQVIModule::ExceptionQVIModule(const Utilities::String& text) : Utilities::ExceptionResource(text)
{
}

ExceptionQVIModule::ExceptionQVIModule(const Utilities::String& module, const Utilities::String& detail)
    : Utilities::ExceptionResource(ModuleText(module, detail))
{
}

} // namespace QVIManager

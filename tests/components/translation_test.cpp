// LanguageServiceInterface with a real "LanguageService" plug-in: the
// library's messages come out translated, untranslated ones marked when
// marking is on, and the forwarding operations with their rethrow rules.

#include "qvimanager/cmetry/exception_cmetry.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/components/naming_service.h"
#include "qvimanager/density/density_service.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/directory.h"
#include "qvimanager/platform/file.h"
#include "qvimanager/platform/language_service_interface.h"
#include "tests/components/load_test_plugin.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

using CMetry::ExceptionCMetry;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using TestSupport::FailureText;
using Utilities::Anything;
using Utilities::Directory;
using Utilities::ExceptionNamingService;
using Utilities::ExceptionNullpointer;
using Utilities::ExceptionOutOfBound;
using Utilities::ExceptionResourceNotAvailable;
using Utilities::LanguageServiceInterface;
using Utilities::NamingService;
using Utilities::String;

using TestPlugins::LoadTestPlugin;

void InstallService()
{
    LoadTestPlugin("language_service");
}

std::string Translation(const char* text)
{
    return LanguageServiceInterface().GetTranslation(String(text)).GetCharPointer();
}

std::string IlluminationFailure(const char* value)
{
    return FailureText<ExceptionCMetry>([value] {
        QVMeasureConditions conditions;
        conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String(value));
    });
}

std::string ObserverFailure(const char* value)
{
    return FailureText<ExceptionCMetry>([value] {
        QVMeasureConditions conditions;
        conditions.SetMeasureCondition(String("Colorimetric.Observer"), String(value));
    });
}

// ---------------------------------------------------------------- without a service

TEST(LanguageServiceAbsent, TranslationGivesTheTextItself)
{
    EXPECT_EQ("x", Translation("x"));
    EXPECT_STREQ("x", LanguageServiceInterface().GetReverseTranslation(String("x")).GetCharPointer());
}

TEST(LanguageServiceAbsent, ForwardingOperationsNeedTheService)
{
    LanguageServiceInterface language;
    const char* const text = "Failed to access to nullpointer.";
    EXPECT_EQ(text, FailureText<ExceptionNullpointer>([&] { language.GetAllLanguages(); }));
    EXPECT_EQ(text, FailureText<ExceptionNullpointer>([&] { language.SetActualLanguage(String("Deutsch")); }));
    EXPECT_EQ(text, FailureText<ExceptionNullpointer>([&] { language.GetActualLanguage(); }));
    EXPECT_EQ(text, FailureText<ExceptionNullpointer>([&] { language.EnableMarking(true); }));
    EXPECT_EQ(text, FailureText<ExceptionNullpointer>([&] { language.GetEnableMarking(); }));
    EXPECT_EQ(text, FailureText<ExceptionNullpointer>([&] { language.Initialize(); }));
}

TEST(LanguageServiceAbsent, MessagesKeepTheirOwnWords)
{
    EXPECT_EQ("Bogus is not a valid illuminationtype", IlluminationFailure("Bogus"));
}

TEST(LanguageServiceAbsent, AfterTheNamingServiceHasGoneMessagesKeepTheirOwnWords)
{
    InstallService();
    NamingService::ReleaseInstance();
    EXPECT_EQ("x", Translation("x"));
    EXPECT_EQ("Bogus is not a valid illuminationtype", IlluminationFailure("Bogus"));
}

// ---------------------------------------------------------------- translating

TEST(LanguageServiceTranslation, MeasureConditionMessageIsTranslatedBeforeItsValueIsFilledIn)
{
    InstallService();
    EXPECT_EQ("Bogus ist keine gueltige Lichtart", IlluminationFailure("Bogus"));
}

TEST(LanguageServiceTranslation, UntranslatedMessageIsMarkedWhenMarkingIsOn)
{
    InstallService();
    EXPECT_EQ("Bogus is not a valid observertype", ObserverFailure("Bogus"));
    LanguageServiceInterface().EnableMarking(true);
    EXPECT_EQ("(Bogus is not a valid observertype)", ObserverFailure("Bogus"));
    // A translated one is not marked.
    EXPECT_EQ("Bogus ist keine gueltige Lichtart", IlluminationFailure("Bogus"));
}

TEST(LanguageServiceTranslation, ServiceThatThrowsGivesTheTextMarkedOrNot)
{
    InstallService();
    LanguageServiceInterface language;
    EXPECT_EQ("x", Translation("x"));
    language.EnableMarking(true);
    EXPECT_TRUE(language.GetEnableMarking());
    EXPECT_EQ("(x)", Translation("x"));
    EXPECT_STREQ("x", language.GetReverseTranslation(String("x")).GetCharPointer());
}

TEST(LanguageServiceTranslation, ReverseTranslationGivesTheEnglishKey)
{
    InstallService();
    EXPECT_STREQ("Missing WhiteReference",
                 LanguageServiceInterface().GetReverseTranslation(String("Weissbezug fehlt")).GetCharPointer());
}

TEST(LanguageServiceTranslation, MarkingThatCannotBeAskedGivesTheTextUnmarked)
{
    InstallService();
    LanguageServiceInterface language;
    language.EnableMarking(true);
    language.SetActualLanguage(String("Broken"));
    EXPECT_EQ("x", Translation("x"));
}

TEST(LanguageServiceTranslation, DensityMessageIsTranslated)
{
    InstallService();
    float values[36];
    for (float& value : values) {
        value = 0.5f;
    }
    // Paper white as the base, and none was given.
    EXPECT_EQ("Weissbezug fehlt", FailureText<ExceptionCMetry>([&] {
                  CMetry::DensityService::GetDensity(QVSpectrum(values), QVMeasureConditions());
              }));
}

TEST(LanguageServiceTranslation, DirectoryMessageIsTranslated)
{
    InstallService();
    char pattern[] = "/tmp/qvimanager-translation-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    const std::string missing = std::string(pattern) + "/missing";
    EXPECT_EQ("Fehler: Verzeichnis " + missing + " existiert nicht",
              FailureText<ExceptionResourceNotAvailable>(
                  [&] { Directory::NewInstance(Directory::SpecifiedDirectory, String(missing.c_str())); }));
    rmdir(pattern);
}

TEST(LanguageServiceTranslation, DescriptorQueryMessagesAreTranslated)
{
    InstallService();
    LoadTestPlugin("descriptor_kinds");
    NamingService* const service = NamingService::Instance();
    EXPECT_EQ("Der Sortierschluessel fehlt in einer Komponente des Filters.",
              FailureText<ExceptionNamingService>([&] {
                  service->GetFilteredSortedDescriptorsList(String("category"), Anything("TestSort"), String("tier"),
                                                            NamingService::SortAsShort);
              }));
    EXPECT_EQ("Die angegebene Sortierart ist nicht korrekt", FailureText<ExceptionNamingService>([&] {
                  service->GetFilteredSortedDescriptorsList(String("category"), Anything("TestSort"),
                                                            String("label"), NamingService::SortAsLong);
              }));
}

// ---------------------------------------------------------------- forwarding

TEST(LanguageServiceForwarding, LanguagesAreTheServices)
{
    InstallService();
    LanguageServiceInterface language;
    EXPECT_STREQ("Deutsch", language.GetActualLanguage().GetCharPointer());
    language.SetActualLanguage(String("English"));
    EXPECT_STREQ("English", LanguageServiceInterface().GetActualLanguage().GetCharPointer());
    EXPECT_EQ("Error: Directory %DIR% does not exist", Translation("Error: Directory %DIR% does not exist"));
    const Utilities::Vector<String> languages = language.GetAllLanguages();
    ASSERT_EQ(2UL, languages.GetSize());
    EXPECT_STREQ("Deutsch", languages[0].GetCharPointer());
    EXPECT_STREQ("English", languages[1].GetCharPointer());
    EXPECT_NO_THROW(language.Initialize());
}

TEST(LanguageServiceForwarding, ServiceFailuresComeBackAsOutOfBound)
{
    InstallService();
    LanguageServiceInterface language;
    EXPECT_EQ("Unknown language: Klingon",
              FailureText<ExceptionOutOfBound>([&] { language.SetActualLanguage(String("Klingon")); }));
    language.SetActualLanguage(String("Broken"));
    EXPECT_EQ("The language service is broken", FailureText<ExceptionOutOfBound>([&] { language.GetActualLanguage(); }));
    EXPECT_EQ("The language service is broken", FailureText<ExceptionOutOfBound>([&] { language.GetAllLanguages(); }));
}

TEST(LanguageServiceForwarding, InitializeFailureComesBackAsResourceNotAvailable)
{
    InstallService();
    LanguageServiceInterface language;
    language.SetActualLanguage(String("Broken"));
    EXPECT_EQ("The language service is broken",
              FailureText<ExceptionResourceNotAvailable>([&] { language.Initialize(); }));
}

TEST(LanguageServiceForwarding, MarkingFailuresAreSwallowed)
{
    InstallService();
    LanguageServiceInterface language;
    language.SetActualLanguage(String("Broken"));
    EXPECT_NO_THROW(language.EnableMarking(true));
    EXPECT_FALSE(language.GetEnableMarking());
}

TEST(LanguageServiceForwarding, CopiesShareTheService)
{
    InstallService();
    LanguageServiceInterface first;
    LanguageServiceInterface second(first);
    LanguageServiceInterface third;
    third = second;
    third = third;
    first.EnableMarking(true);
    EXPECT_TRUE(second.GetEnableMarking());
    EXPECT_TRUE(third.GetEnableMarking());
}

} // namespace

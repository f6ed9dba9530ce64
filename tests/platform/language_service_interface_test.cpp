// Without a "LanguageService" component the translation door gives back its
// text unchanged, so messages are raised in their literal words.

#include "qvimanager/platform/language_service_interface.h"

#include <gtest/gtest.h>

#include <string>

using Utilities::LanguageServiceInterface;
using Utilities::String;

TEST(LanguageServiceInterface, WithoutAServiceTranslationGivesTheTextItself)
{
    LanguageServiceInterface language;
    EXPECT_STREQ("x", language.GetTranslation(String("x")).GetCharPointer());
    EXPECT_STREQ("%VALUE% is not a valid observertype",
                 language.GetTranslation(String("%VALUE% is not a valid observertype")).GetCharPointer());
    EXPECT_STREQ("", language.GetTranslation(String()).GetCharPointer());
}

TEST(LanguageServiceInterface, WithoutAServiceReverseTranslationGivesTheTextItself)
{
    LanguageServiceInterface language;
    EXPECT_STREQ("Fehler", language.GetReverseTranslation(String("Fehler")).GetCharPointer());
}

TEST(LanguageServiceInterface, TextsKeepEveryByte)
{
    LanguageServiceInterface language;
    const String text(std::string("a\0b\xe9", 4));
    const String translated = language.GetTranslation(text);
    EXPECT_EQ(4UL, translated.Length());
    EXPECT_TRUE(translated == text);
}

TEST(LanguageServiceInterface, CopiesWorkAlike)
{
    LanguageServiceInterface first;
    LanguageServiceInterface second(first);
    LanguageServiceInterface third;
    third = second;
    EXPECT_STREQ("y", third.GetTranslation(String("y")).GetCharPointer());
    EXPECT_STREQ("LanguageServiceInterface", first.GetValueString().c_str());
}

// The conversions between paths with '/' and paths with the platform's
// separator, for both separators a platform may have: '\\' swaps the two
// (keeping a '\\' behind a double-byte lead byte), '/' changes nothing.

#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/path_separators.h"

#include <gtest/gtest.h>

#include <string>

using Utilities::ConvertToIndependentSeparators;
using Utilities::ConvertToPlatformSeparators;
using Utilities::String;

namespace {

std::string ToPlatform(const std::string& path, char separator)
{
    return ConvertToPlatformSeparators(String(path), separator);
}

std::string ToIndependent(const std::string& path, char separator)
{
    return ConvertToIndependentSeparators(String(path), separator);
}

} // namespace

TEST(PathSeparatorsBackslash, SlashesBecomeBackslashes)
{
    EXPECT_EQ("a\\b", ToPlatform("a/b", '\\'));
    EXPECT_EQ("C:\\Programs\\plugins\\x.dll", ToPlatform("C:/Programs/plugins/x.dll", '\\'));
}

TEST(PathSeparatorsBackslash, BackslashesBecomeSlashes)
{
    EXPECT_EQ("a/b", ToIndependent("a\\b", '\\'));
    EXPECT_EQ("C:/Programs/plugins/x.dll", ToIndependent("C:\\Programs\\plugins\\x.dll", '\\'));
}

TEST(PathSeparatorsBackslash, TheTwoConversionsUndoEachOther)
{
    for (const std::string path : {"a/b", "/a//b/", "a", "", "x/y/z.txt"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(path, ToIndependent(ToPlatform(path, '\\'), '\\'));
    }
}

TEST(PathSeparatorsBackslash, EmptyPiecesAreKept)
{
    EXPECT_EQ("\\a\\\\b\\", ToPlatform("/a//b/", '\\'));
    EXPECT_EQ("/a//b/", ToIndependent("\\a\\\\b\\", '\\'));
    EXPECT_EQ("\\", ToPlatform("/", '\\'));
    EXPECT_EQ("/", ToIndependent("\\", '\\'));
}

TEST(PathSeparatorsBackslash, TheEmptyPathStaysEmpty)
{
    EXPECT_EQ("", ToPlatform("", '\\'));
    EXPECT_EQ("", ToIndependent("", '\\'));
}

TEST(PathSeparatorsBackslash, ToThePlatformOnlySlashesChange)
{
    EXPECT_EQ("a\\b", ToPlatform("a\\b", '\\'));
    EXPECT_EQ("a\\b\\c", ToPlatform("a\\b/c", '\\'));
}

TEST(PathSeparatorsBackslash, ABackslashBehindALeadByteStays)
{
    EXPECT_EQ("\x83\\x", ToIndependent("\x83\\x", '\\'));
    EXPECT_EQ("a/\x83\\x/b", ToIndependent("a\\\x83\\x\\b", '\\'));
}

TEST(PathSeparatorsBackslash, LeadBytesAreExactly128To159)
{
    EXPECT_EQ("\x7f/x", ToIndependent("\x7f\\x", '\\'));
    EXPECT_EQ("\x80\\x", ToIndependent("\x80\\x", '\\'));
    EXPECT_EQ("\x9f\\x", ToIndependent("\x9f\\x", '\\'));
    EXPECT_EQ("\xa0/x", ToIndependent("\xa0\\x", '\\'));
    EXPECT_EQ("\xff/x", ToIndependent("\xff\\x", '\\'));
}

TEST(PathSeparatorsBackslash, OnlyTheSeparatorRightBehindTheLeadByteStays)
{
    // The second separator follows a '\\', which is no lead byte.
    EXPECT_EQ("\x83\\/x", ToIndependent("\x83\\\\x", '\\'));
    // A separator at the start has no byte in front of it.
    EXPECT_EQ("/\x83\\x", ToIndependent("\\\x83\\x", '\\'));
}

TEST(PathSeparatorsBackslash, ALeadByteDoesNotChangeTheWayToThePlatform)
{
    EXPECT_EQ("\x83\\x", ToPlatform("\x83/x", '\\'));
}

TEST(PathSeparatorsSlash, BothConversionsAreTheIdentity)
{
    for (const std::string path : {"a/b", "/a//b/", "", "a\\b", "/", "\x83\\x", "\x83/x", "/etc/passwd"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(path, ToPlatform(path, '/'));
        EXPECT_EQ(path, ToIndependent(path, '/'));
    }
}

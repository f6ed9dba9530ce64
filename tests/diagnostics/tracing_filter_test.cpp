// Which functions are traced: the filter files of the working directory,
// "PackageDiagnosticsFilter.txt" and "ClassDiagnosticsFilter.txt".

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/publisher.h"
#include "qvimanager/diagnostics/trace_item.h"

#include "tracing_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Diagnostics::Publisher;
using Diagnostics::TraceItem;
using TracingSupport::FilterState;
using TracingSupport::Recorder;
using TracingSupport::Repeat;

namespace {

const char* const kPackageFile = "PackageDiagnosticsFilter.txt";
const char* const kClassFile = "ClassDiagnosticsFilter.txt";

bool Traced(const char* package, const char* className)
{
    return TraceItem::IsDiagnosticsToBeCarriedOut(package, className);
}

// The entries a list of `size` holds when `lines` were read into it.
std::vector<std::string> Entries(std::vector<std::string> lines, unsigned size)
{
    lines.resize(size);
    return lines;
}

class TracingFilter : public TracingSupport::ScratchWorkingDirectory {};

} // namespace

// --- The decisions ------------------------------------------------------------

TEST_F(TracingFilter, WithoutFilesEverythingIsTraced)
{
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_TRUE(Traced("Other", "Thing"));
    EXPECT_TRUE(Traced("Pkg", ""));
    EXPECT_TRUE(Traced("", ""));
    EXPECT_FALSE(FilterState::ShowOnly());
}

TEST_F(TracingFilter, ListedClassIsNotTraced)
{
    Put(kClassFile, "Cls\nOther\n");
    EXPECT_FALSE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", "Other"));
    EXPECT_TRUE(Traced("Pkg", "Third"));
}

TEST_F(TracingFilter, ListedPackageIsNotTraced)
{
    Put(kPackageFile, "Pkg");
    EXPECT_FALSE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", ""));
    EXPECT_TRUE(Traced("Other", "Cls"));
}

TEST_F(TracingFilter, ClassNamesDoNotFilterPackagesNorTheOtherWayRound)
{
    Put(kPackageFile, "Alpha\n");
    Put(kClassFile, "Beta\n");
    EXPECT_TRUE(Traced("Beta", "Alpha"));
    EXPECT_FALSE(Traced("Alpha", "Alpha"));
    EXPECT_FALSE(Traced("Beta", "Beta"));
}

TEST_F(TracingFilter, ShowOnlyAloneTracesNothing)
{
    Put(kClassFile, "{ShowOnly}\n");
    EXPECT_FALSE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Other", "Thing"));
    EXPECT_FALSE(Traced("Pkg", ""));
    EXPECT_TRUE(FilterState::ShowOnly());
}

TEST_F(TracingFilter, ShowOnlyTracesTheListedClass)
{
    Put(kClassFile, "{ShowOnly}\nCls\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", "Other"));
}

TEST_F(TracingFilter, ShowOnlyTracesTheListedPackage)
{
    Put(kPackageFile, "Pkg\n{ShowOnly}\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_TRUE(Traced("Pkg", ""));
    EXPECT_FALSE(Traced("Other", "Cls"));
}

TEST_F(TracingFilter, ShowOnlyInOneFileTurnsRoundTheOther)
{
    Put(kPackageFile, "{ShowOnly}\n");
    Put(kClassFile, "Cls\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", "Other"));
}

TEST_F(TracingFilter, ShowOnlyMarkerAnywhereInALineCounts)
{
    Put(kClassFile, "Cls\n  {ShowOnly} please\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", "Other"));
    EXPECT_TRUE(FilterState::ShowOnly());
}

TEST_F(TracingFilter, MisspeltMarkerIsJustAName)
{
    Put(kClassFile, "{showonly}\nCls\n");
    EXPECT_FALSE(FilterState::ShowOnly());
    EXPECT_FALSE(Traced("Pkg", "Cls"));
    EXPECT_TRUE(Traced("Pkg", "Other"));
}

TEST_F(TracingFilter, EntryWithATrailingBlankDoesNotMatch)
{
    Put(kClassFile, "Cls \n Pkg2\n");
    Put(kPackageFile, "Pkg \n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_TRUE(Traced("Pkg2", "X"));
    EXPECT_FALSE(Traced("Pkg", "Cls "));
}

TEST_F(TracingFilter, ComparisonIsCaseSensitive)
{
    Put(kClassFile, "cls\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", "cls"));
}

TEST_F(TracingFilter, ComparisonIsOnTheWholeText)
{
    Put(kClassFile, "Cl\nClsx\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", "Cl"));
    EXPECT_FALSE(Traced("Pkg", "Clsx"));
}

TEST_F(TracingFilter, CarriageReturnBeforeTheNewlineIsDropped)
{
    Put(kClassFile, "Cls\r\nOther\r\nLast\r");
    EXPECT_FALSE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", "Other"));
    // Not followed by a newline, it stays part of the name.
    EXPECT_TRUE(Traced("Pkg", "Last"));
    EXPECT_FALSE(Traced("Pkg", "Last\r"));
}

TEST_F(TracingFilter, EmptyNamesMatchNoEntry)
{
    // The class list holds empty entries (unused ones, and the line after
    // the final newline); a free function's empty class name matches none.
    Put(kClassFile, "Cls\n\n");
    EXPECT_TRUE(Traced("Pkg", ""));
    EXPECT_TRUE(Traced("", ""));
    EXPECT_FALSE(Traced("Pkg", "Cls"));
}

// --- Read once ----------------------------------------------------------------

TEST_F(TracingFilter, FilesAreReadAtTheFirstDecisionOnly)
{
    EXPECT_FALSE(FilterState::ListsExist());
    Put(kClassFile, "Cls\n");
    EXPECT_FALSE(Traced("Pkg", "Cls"));
    EXPECT_TRUE(FilterState::ListsExist());

    // Changed, added or removed afterwards: nothing changes.
    Put(kClassFile, "Other\n");
    Put(kPackageFile, "{ShowOnly}\nPkg\n");
    EXPECT_FALSE(Traced("Pkg", "Cls"));
    EXPECT_TRUE(Traced("Pkg", "Other"));
    EXPECT_FALSE(FilterState::ShowOnly());
    std::filesystem::remove(In(kClassFile));
    EXPECT_FALSE(Traced("Pkg", "Cls"));
}

TEST_F(TracingFilter, MissingFilesAreNotLookedForAgain)
{
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    Put(kClassFile, "Cls\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
}

TEST_F(TracingFilter, FilesAreReadFromTheWorkingDirectoryOfTheFirstDecision)
{
    Put(kClassFile, "Cls\n");
    std::filesystem::create_directory(In("elsewhere"));
    std::filesystem::current_path(In("elsewhere"));
    EXPECT_TRUE(Traced("Pkg", "Cls"));
}

TEST_F(TracingFilter, DestroyedPublisherDropsTheListsAndTheNextDecisionReadsAgain)
{
    Put(kClassFile, "{ShowOnly}\nCls\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_FALSE(Traced("Pkg", "Other"));
    {
        Recorder publisher;
    }
    EXPECT_FALSE(FilterState::ListsExist());

    Put(kClassFile, "Other\n");
    // The new list is read; show-only, once set, stays.
    EXPECT_FALSE(Traced("Pkg", "Cls"));
    EXPECT_TRUE(Traced("Pkg", "Other"));
    EXPECT_TRUE(FilterState::ShowOnly());
}

// --- What the lists hold ------------------------------------------------------

TEST_F(TracingFilter, ListsStartWithTwentyEmptyEntries)
{
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_EQ(std::vector<std::string>(20), FilterState::PackageNames());
    EXPECT_EQ(std::vector<std::string>(20), FilterState::ClassNames());
}

TEST_F(TracingFilter, EachLineIsAnEntryAndShowOnlyIsStoredLikeAnyOther)
{
    Put(kPackageFile, "Alpha\n{ShowOnly}\nBeta");
    Put(kClassFile, "One\nTwo");
    EXPECT_TRUE(Traced("Alpha", "X"));
    EXPECT_EQ(Entries({"Alpha", "{ShowOnly}", "Beta"}, 20), FilterState::PackageNames());
    EXPECT_EQ(Entries({"One", "Two"}, 20), FilterState::ClassNames());
}

TEST_F(TracingFilter, EmptyLineAfterTheFinalNewlineIsStored)
{
    // Twenty lines fill the list; the empty line read past the final newline
    // is the twenty-first entry and makes the list grow by 2.
    std::string twenty;
    std::vector<std::string> names;
    for (int i = 0; i < 20; ++i) {
        names.push_back("Name" + std::to_string(i));
        twenty += names.back() + "\n";
    }
    Put(kClassFile, twenty);
    Put(kPackageFile, twenty.substr(0, twenty.size() - 1));
    EXPECT_FALSE(Traced("Name19", "Name0"));
    EXPECT_EQ(Entries(names, 22), FilterState::ClassNames());
    EXPECT_EQ(Entries(names, 20), FilterState::PackageNames());
}

TEST_F(TracingFilter, ListGrowsByTwoWhenFull)
{
    std::string lines;
    std::vector<std::string> names;
    for (int i = 0; i < 23; ++i) {
        names.push_back("C" + std::to_string(i));
        lines += (i > 0 ? "\n" : "") + names.back();
    }
    Put(kClassFile, lines);
    EXPECT_FALSE(Traced("Pkg", "C22"));
    EXPECT_FALSE(Traced("Pkg", "C0"));
    EXPECT_EQ(Entries(names, 24), FilterState::ClassNames());
}

TEST_F(TracingFilter, EmptyFileGivesOneEmptyEntry)
{
    // The first read finds the end at once, and its empty line is stored.
    Put(kClassFile, "");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    EXPECT_EQ(std::vector<std::string>(20), FilterState::ClassNames());
}

TEST_F(TracingFilter, LongLineKeepsItsFirst255Characters)
{
    const std::string name = Repeat("abcdefghij", 30);
    Put(kClassFile, name + "\nNext\n");
    EXPECT_TRUE(Traced("Pkg", "Cls"));
    const std::vector<std::string> entries = FilterState::ClassNames();
    ASSERT_EQ(20U, entries.size());
    EXPECT_EQ(name.substr(0, 255), entries[0]);
    EXPECT_EQ("Next", entries[1]);
    EXPECT_EQ("", entries[2]);
    EXPECT_FALSE(Traced("Pkg", "Next"));
}

TEST_F(TracingFilter, ReadingOnItsOwnMakesTheListsAndReadsAgain)
{
    Put(kClassFile, "One\n");
    Publisher::ReadDiagnosticsPublishFilter();
    EXPECT_EQ(Entries({"One"}, 20), FilterState::ClassNames());
    EXPECT_FALSE(Traced("Pkg", "One"));

    // Read again, from entry 0: what is not overwritten stays.
    Put(kClassFile, "Two");
    Publisher::ReadDiagnosticsPublishFilter();
    EXPECT_EQ(Entries({"Two"}, 20), FilterState::ClassNames());
    Put(kClassFile, "Three\n{ShowOnly}\nFour\n");
    Publisher::ReadDiagnosticsPublishFilter();
    Put(kClassFile, "Five");
    Publisher::ReadDiagnosticsPublishFilter();
    EXPECT_EQ(Entries({"Five", "{ShowOnly}", "Four"}, 20), FilterState::ClassNames());
    EXPECT_TRUE(FilterState::ShowOnly());
}

TEST_F(TracingFilter, MatchWithDiagnosticsFilterIsTheNegation)
{
    Put(kClassFile, "Cls\n");
    EXPECT_TRUE(Publisher::MatchWithDiagnosticsFilter(Diagnostics::String("Pkg"), Diagnostics::String("Cls")));
    EXPECT_FALSE(Publisher::MatchWithDiagnosticsFilter(Diagnostics::String("Pkg"), Diagnostics::String("X")));
}

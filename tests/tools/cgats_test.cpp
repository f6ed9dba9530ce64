// The CGATS component: tokens, numbers, spectral field names, the row-by-row
// reader on good and broken files, and the writer read back by the reader.

#include "cgats/cgats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

std::vector<std::string> Tokens(std::string_view line)
{
    std::vector<std::string_view> views;
    Cgats::Tokenize(line, views);
    return std::vector<std::string>(views.begin(), views.end());
}

using Strings = std::vector<std::string>;

// A whole file read into memory.
struct Table {
    std::string identifier;
    std::vector<std::pair<std::string, std::string>> keywords;
    Strings fields;
    std::size_t formatLine = 0;
    std::vector<Strings> rows;
    std::vector<std::size_t> lines;
};

Table ReadAll(std::istream& input, const std::string& name)
{
    Cgats::Reader reader(input, name);
    Table table;
    table.identifier = reader.Identifier();
    table.keywords = reader.Keywords();
    table.fields = reader.Fields();
    table.formatLine = reader.FormatLine();
    Cgats::Row row;
    while (reader.Next(row)) {
        table.rows.emplace_back(row.values.begin(), row.values.end());
        table.lines.push_back(row.line);
    }
    // After the end, Next stays false and leaves no values behind.
    EXPECT_FALSE(reader.Next(row));
    EXPECT_TRUE(row.values.empty());
    return table;
}

Table ReadText(const std::string& text, const std::string& name = "test.cgats")
{
    std::istringstream input(text);
    return ReadAll(input, name);
}

// The error a broken input raises, read to its end.
Cgats::Error FailureOf(const std::string& text, const std::string& name)
{
    std::istringstream input(text);
    try {
        Cgats::Reader reader(input, name);
        Cgats::Row row;
        while (reader.Next(row)) {
        }
    } catch (const Cgats::Error& error) {
        return error;
    }
    ADD_FAILURE() << "no Cgats::Error for:\n" << text;
    return Cgats::Error(name, 0, "no error");
}

void ExpectError(const Cgats::Error& error, const std::string& file, std::size_t line, const std::string& message)
{
    EXPECT_EQ(file, error.File());
    EXPECT_EQ(line, error.Line());
    EXPECT_EQ(message, error.Message());
    const std::string where = line > 0 ? file + ":" + std::to_string(line) : file;
    EXPECT_EQ(where + ": " + message, std::string(error.what()));
}

bool StartsWith(const std::string& text, const std::string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

const std::string kSmall = "CGATS.17\n"
                           "ORIGINATOR\t\"test bench\"\n"
                           "NUMBER_OF_FIELDS\t3\n"
                           "BEGIN_DATA_FORMAT\n"
                           "SAMPLE_ID\tSAMPLE_NAME\tSPECTRAL_NM380\n"
                           "END_DATA_FORMAT\n"
                           "NUMBER_OF_SETS\t2\n"
                           "BEGIN_DATA\n"
                           "1\t\"paper white\"\t0.91\n"
                           "2\t\"black\"\t0.02\n"
                           "END_DATA\n";

// ------------------------------------------------------------------ Tokenize

TEST(CgatsTokenize, SplitsAtBlanksAndTabs)
{
    EXPECT_EQ((Strings{"a", "bc", "d", "e"}), Tokens("a bc\td \t  e"));
    EXPECT_EQ((Strings{"SAMPLE_ID", "SPECTRAL_NM380"}), Tokens("  \tSAMPLE_ID\t\tSPECTRAL_NM380 \t"));
}

TEST(CgatsTokenize, EmptyAndBlankLinesHaveNoTokens)
{
    EXPECT_TRUE(Tokens("").empty());
    EXPECT_TRUE(Tokens("   ").empty());
    EXPECT_TRUE(Tokens("\t \t").empty());
}

TEST(CgatsTokenize, QuotedStringKeepsItsBlanksAndLosesItsQuotes)
{
    EXPECT_EQ((Strings{"19", "white 9.5 (.05 D)", "0.5"}), Tokens("19\t\"white 9.5 (.05 D)\"\t0.5"));
    EXPECT_EQ((Strings{"a\tb", "c"}), Tokens("\"a\tb\" c"));
    EXPECT_EQ((Strings{"  padded  "}), Tokens("\"  padded  \""));
}

TEST(CgatsTokenize, EmptyQuotedStringIsAnEmptyToken)
{
    EXPECT_EQ((Strings{"a", "", "b"}), Tokens("a \"\" b"));
}

TEST(CgatsTokenize, HashStartingATokenEndsTheLine)
{
    EXPECT_TRUE(Tokens("# a comment line").empty());
    EXPECT_TRUE(Tokens("   #indented comment").empty());
    EXPECT_EQ((Strings{"1", "0.5"}), Tokens("1 0.5 # trailing comment \"with quotes\""));
    EXPECT_EQ((Strings{"1", "0.5"}), Tokens("1 0.5\t#no blank after the hash"));
}

TEST(CgatsTokenize, HashInsideATokenOrAQuoteIsText)
{
    EXPECT_EQ((Strings{"a#b", "c"}), Tokens("a#b c"));
    EXPECT_EQ((Strings{"#1 patch", "x"}), Tokens("\"#1 patch\" x"));
}

TEST(CgatsTokenize, UnclosedQuoteRunsToTheEndOfTheLine)
{
    EXPECT_EQ((Strings{"a", "b c  d"}), Tokens("a \"b c  d"));
    EXPECT_EQ((Strings{"x", ""}), Tokens("x \""));
}

TEST(CgatsTokenize, TokensPointIntoTheLineAndOldTokensAreCleared)
{
    const std::string line = "one \"two three\" four";
    std::vector<std::string_view> tokens = {"stale", "stale"};
    Cgats::Tokenize(line, tokens);
    ASSERT_EQ(3u, tokens.size());
    for (std::string_view token : tokens) {
        EXPECT_GE(token.data(), line.data());
        EXPECT_LE(token.data() + token.size(), line.data() + line.size());
    }
    EXPECT_EQ(line.data() + 5, tokens[1].data());
}

// --------------------------------------------------------------- ParseNumber

TEST(CgatsParseNumber, DecimalPoint)
{
    double value = 0.0;
    ASSERT_TRUE(Cgats::ParseNumber("0.05475", value));
    EXPECT_EQ(std::strtod("0.05475", nullptr), value);
    ASSERT_TRUE(Cgats::ParseNumber("12", value));
    EXPECT_EQ(12.0, value);
    ASSERT_TRUE(Cgats::ParseNumber("100.000", value));
    EXPECT_EQ(100.0, value);
    ASSERT_TRUE(Cgats::ParseNumber(".5", value));
    EXPECT_EQ(0.5, value);
    ASSERT_TRUE(Cgats::ParseNumber("0", value));
    EXPECT_EQ(0.0, value);
}

TEST(CgatsParseNumber, DecimalComma)
{
    double value = 0.0;
    ASSERT_TRUE(Cgats::ParseNumber("0,05475", value));
    EXPECT_EQ(std::strtod("0.05475", nullptr), value);
    ASSERT_TRUE(Cgats::ParseNumber("-1,25", value));
    EXPECT_EQ(-1.25, value);
    float single = 0.0f;
    ASSERT_TRUE(Cgats::ParseNumber("0,1", single));
    EXPECT_EQ(0.1f, single);
}

TEST(CgatsParseNumber, ExponentAsMeasuringSoftwareWritesIt)
{
    double value = 0.0;
    ASSERT_TRUE(Cgats::ParseNumber("1.25E-03", value));
    EXPECT_EQ(std::strtod("1.25E-03", nullptr), value);
    ASSERT_TRUE(Cgats::ParseNumber("2e2", value));
    EXPECT_EQ(200.0, value);
}

TEST(CgatsParseNumber, Sign)
{
    double value = 0.0;
    ASSERT_TRUE(Cgats::ParseNumber("-2.25", value));
    EXPECT_EQ(-2.25, value);
    ASSERT_TRUE(Cgats::ParseNumber("+2.25", value));
    EXPECT_EQ(2.25, value);
    ASSERT_TRUE(Cgats::ParseNumber("+0,5", value));
    EXPECT_EQ(0.5, value);
    ASSERT_TRUE(Cgats::ParseNumber("-0", value));
    EXPECT_EQ(0.0, value);
    float single = 0.0f;
    ASSERT_TRUE(Cgats::ParseNumber("+7", single));
    EXPECT_EQ(7.0f, single);
}

TEST(CgatsParseNumber, NegativeZeroKeepsItsSign)
{
    for (const char* text : {"-0", "-0.0", "-0,000"}) {
        double value = 0.0;
        float single = 0.0f;
        ASSERT_TRUE(Cgats::ParseNumber(text, value)) << text;
        ASSERT_TRUE(Cgats::ParseNumber(text, single)) << text;
        EXPECT_TRUE(std::signbit(value)) << text;
        EXPECT_TRUE(std::signbit(single)) << text;
    }
}

namespace {

// The value the standard library reads from the text (decimal comma as a
// point, without a leading "+"), bit for bit.
template <typename T>
T Reference(std::string text)
{
    std::replace(text.begin(), text.end(), ',', '.');
    if (!text.empty() && text[0] == '+') {
        text.erase(0, 1);
    }
    T value{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(std::errc(), result.ec) << text;
    EXPECT_EQ(text.data() + text.size(), result.ptr) << text;
    return value;
}

template <typename T>
void ExpectReadAsTheStandardLibraryReadsIt(const std::string& text)
{
    T value{};
    ASSERT_TRUE(Cgats::ParseNumber(text, value)) << text;
    const T expected = Reference<T>(text);
    EXPECT_EQ(0, std::memcmp(&expected, &value, sizeof value)) << text << ": " << expected << " read as " << value;
}

// The double and the float read at once are those read one at a time.
void ExpectBothFormsAsEachAlone(const std::string& text)
{
    double alone = 0.0;
    float singleAlone = 0.0f;
    const bool good = Cgats::ParseNumber(text, alone);
    const bool singleGood = Cgats::ParseNumber(text, singleAlone);
    double both = 0.0;
    float singleBoth = 0.0f;
    bool single = false;
    ASSERT_EQ(good, Cgats::ParseNumber(text, both, singleBoth, single)) << text;
    if (!good) {
        EXPECT_FALSE(single) << text;
        return;
    }
    EXPECT_EQ(singleGood, single) << text;
    EXPECT_EQ(0, std::memcmp(&alone, &both, sizeof both)) << text;
    if (single) {
        EXPECT_EQ(0, std::memcmp(&singleAlone, &singleBoth, sizeof singleBoth)) << text;
    }
}

} // namespace

TEST(CgatsParseNumber, BothFormsAtOnce)
{
    for (const char* text : {"0.05475", "-0", "1e39", "-1e39", "1e-50", "2.00000001", "16777217", "0,5", "+7", "x",
                             "", "inf", "1.5e3", "9007199254740993", "12345678901234567890"}) {
        ExpectBothFormsAsEachAlone(text);
    }
    double value = 0.0;
    float single = 0.0f;
    bool singleGood = true;
    ASSERT_TRUE(Cgats::ParseNumber("1e39", value, single, singleGood));
    EXPECT_EQ(1e39, value);
    EXPECT_FALSE(singleGood);
}

// Plain decimals take a short way (one division by an exact power of ten);
// it must give the nearest float or double exactly as the full parse does,
// also at the edges where the short way stops.
TEST(CgatsParseNumber, PlainDecimalsAreReadToTheLastBit)
{
    const char* const edges[] = {"16777216",          "16777217",          "1.6777216",        "1677721.7",
                                 "0.0000000001",      "0.00000000001",     "0.1234567891",     "9007199254740992",
                                 "9007199254740993",  "0.9007199254740993", "1234567890123456789",
                                 "12345678901234567890", "0.1",            "0.2",              "0.3",
                                 "0.7",               "99.99999",          "0.05475",          "100.000",
                                 "4294967297.5",      "-0.000001",         "+0,5",             "0,0000000000000000000001",
                                 "000000000000000000000.5"};
    for (const char* text : edges) {
        ExpectReadAsTheStandardLibraryReadsIt<float>(text);
        ExpectReadAsTheStandardLibraryReadsIt<double>(text);
    }
    // Random digit strings: 1 to 20 digits, the separator anywhere.
    std::uint64_t state = 42;
    const auto next = [&state] {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return state >> 33;
    };
    for (int i = 0; i < 200000; ++i) {
        const int length = 1 + static_cast<int>(next() % 20);
        std::string text;
        const std::uint64_t sign = next() % 4;
        if (sign == 0) {
            text += '-';
        } else if (sign == 1) {
            text += '+';
        }
        std::string digits;
        for (int d = 0; d < length; ++d) {
            digits += static_cast<char>('0' + next() % 10);
        }
        const int point = static_cast<int>(next() % static_cast<std::uint64_t>(length + 1));
        if (point > 0 && point < length) {
            digits.insert(static_cast<std::size_t>(point), 1, next() % 2 == 0 ? '.' : ',');
        }
        text += digits;
        ExpectReadAsTheStandardLibraryReadsIt<float>(text);
        ExpectReadAsTheStandardLibraryReadsIt<double>(text);
        ExpectBothFormsAsEachAlone(text);
        if (HasFailure()) {
            return;
        }
    }
}

TEST(CgatsParseNumber, SignsAloneOrDoubledAreNoNumber)
{
    for (const char* text : {"+", "-", "+-1", "-+1", "++1", "--1", "+ 1", "- 1"}) {
        double value = 0.0;
        float single = 0.0f;
        EXPECT_FALSE(Cgats::ParseNumber(text, value)) << text;
        EXPECT_FALSE(Cgats::ParseNumber(text, single)) << text;
    }
}

TEST(CgatsParseNumber, GarbageIsNoNumber)
{
    for (const char* text : {"", " ", "abc", "x1", "0x10", ".", ",", "e5", "1e", "1.2.3", "1,2,3", "1.5,3", "one",
                             "\"0.5\"", "0.5%"}) {
        double value = 0.0;
        float single = 0.0f;
        EXPECT_FALSE(Cgats::ParseNumber(text, value)) << '"' << text << '"';
        EXPECT_FALSE(Cgats::ParseNumber(text, single)) << '"' << text << '"';
    }
}

// A measurement value is a finite decimal: the words "inf" and "nan" are text.
// A number too large for a double is written as a number all the same:
// the difference between "out of range" and "not a number".
TEST(CgatsIsWrittenNumber, TellsNumbersOutOfRangeFromWords)
{
    for (const char* number : {"1e400", "-1e400", "1e-400", "0.5", "5", ",5", "5.", "+1,5E+03", "-0", "1e39"}) {
        EXPECT_TRUE(Cgats::IsWrittenNumber(number)) << number;
    }
    for (const char* word : {"", "-", "+", ".", "e5", "1e", "1e+", "inf", "nan", "0x10", "1.2.3", "1 2", "--1",
                             "0.5x", "1e5.5"}) {
        EXPECT_FALSE(Cgats::IsWrittenNumber(word)) << word;
    }
    double value;
    EXPECT_FALSE(Cgats::ParseNumber("1e400", value));
}

TEST(CgatsParseNumber, InfinityAndNotANumberAreNoNumbers)
{
    for (const char* text : {"inf", "-inf", "+inf", "infinity", "INF", "nan", "NaN", "-nan"}) {
        double value = 0.0;
        float single = 0.0f;
        EXPECT_FALSE(Cgats::ParseNumber(text, value)) << text;
        EXPECT_FALSE(Cgats::ParseNumber(text, single)) << text;
    }
}

TEST(CgatsParseNumber, TrailingOrLeadingCharactersAreNoNumber)
{
    for (const char* text : {"0.5 ", " 0.5", "0.5\t", "\t0.5", "0.5x", "0.5\r", "12nm", "1,5 %", "0.5\"", "1-"}) {
        double value = 0.0;
        float single = 0.0f;
        EXPECT_FALSE(Cgats::ParseNumber(text, value)) << '"' << text << '"';
        EXPECT_FALSE(Cgats::ParseNumber(text, single)) << '"' << text << '"';
    }
}

TEST(CgatsParseNumber, TheViewEndsTheNumber)
{
    // Only the characters of the view count, not what follows in memory.
    const std::string text = "0.25xyz";
    double value = 0.0;
    ASSERT_TRUE(Cgats::ParseNumber(std::string_view(text).substr(0, 4), value));
    EXPECT_EQ(0.25, value);
}

TEST(CgatsParseNumber, FloatIsOneRoundingOfTheDecimal)
{
    // Just above the midpoint between 1 and the next float. Rounded to double
    // first, it lands exactly on the midpoint, and that ties to even: 1.
    // Rounded once, it is above the midpoint: the next float.
    const char* const text = "1.0000000596046447753906251";
    const float next = std::nextafter(1.0f, 2.0f);
    ASSERT_EQ(1.0f, static_cast<float>(std::strtod(text, nullptr)));
    float single = 0.0f;
    ASSERT_TRUE(Cgats::ParseNumber(text, single));
    EXPECT_EQ(next, single);
    ASSERT_TRUE(Cgats::ParseNumber("1,0000000596046447753906251", single));
    EXPECT_EQ(next, single);
    // Just below the midpoint: 1.
    ASSERT_TRUE(Cgats::ParseNumber("1.0000000596046447753906249", single));
    EXPECT_EQ(1.0f, single);
}

TEST(CgatsParseNumber, FloatOfPlainDecimals)
{
    float single = 0.0f;
    ASSERT_TRUE(Cgats::ParseNumber("0.05475", single));
    EXPECT_EQ(0.05475f, single);
    ASSERT_TRUE(Cgats::ParseNumber("-0.1", single));
    EXPECT_EQ(-0.1f, single);
}

// -------------------------------------------------------- SpectralWavelength

TEST(CgatsSpectralWavelength, SpellingsOfAWavelength)
{
    EXPECT_EQ(380, Cgats::SpectralWavelength("SPECTRAL_NM380"));
    EXPECT_EQ(380, Cgats::SpectralWavelength("SPECTRAL_NM_380"));
    EXPECT_EQ(380, Cgats::SpectralWavelength("SPECTRAL_380"));
    EXPECT_EQ(380, Cgats::SpectralWavelength("NM380"));
    EXPECT_EQ(380, Cgats::SpectralWavelength("nm380"));
    EXPECT_EQ(380, Cgats::SpectralWavelength("spectral_nm380"));
    EXPECT_EQ(730, Cgats::SpectralWavelength("Spectral_Nm_730"));
    EXPECT_EQ(555, Cgats::SpectralWavelength("SPECTRAL_NM555"));
    EXPECT_EQ(360, Cgats::SpectralWavelength("SPECTRAL_NM_360"));
    EXPECT_EQ(780, Cgats::SpectralWavelength("nm780"));
}

TEST(CgatsSpectralWavelength, OtherFieldsAreNoWavelength)
{
    for (const char* field : {"SAMPLE_ID", "SAMPLE_NAME", "LAB_L", "LAB_A", "XYZ_Y", "D_CYAN", "SPECTRAL_NMx",
                              "SPECTRAL_NM", "SPECTRAL_NM_", "SPECTRAL_", "SPECTRAL", "NM", "nm_", "", "380",
                              "SPECTRAL_NM380X", "SPECTRAL_NM38O", "SPECTRAL_NM-380", "XSPECTRAL_NM380", "R380"}) {
        EXPECT_EQ(0, Cgats::SpectralWavelength(field)) << '"' << field << '"';
    }
}

// --------------------------------------------------------------------- Error

TEST(CgatsError, NamesFileAndLine)
{
    const Cgats::Error error("data.cgats", 17, "the row has 2 values for 3 fields");
    EXPECT_EQ("data.cgats:17: the row has 2 values for 3 fields", std::string(error.what()));
    EXPECT_EQ("data.cgats", error.File());
    EXPECT_EQ(17u, error.Line());
    EXPECT_EQ("the row has 2 values for 3 fields", error.Message());
}

TEST(CgatsError, LineZeroConcernsTheWholeFile)
{
    const Cgats::Error error("data.cgats", 0, "cannot open the file");
    EXPECT_EQ("data.cgats: cannot open the file", std::string(error.what()));
    EXPECT_EQ(0u, error.Line());
}

// ------------------------------------------------------------- Reader, good

TEST(CgatsReader, ReadsAFile)
{
    const Table table = ReadText(kSmall);
    EXPECT_EQ("CGATS.17", table.identifier);
    ASSERT_EQ(3u, table.keywords.size());
    EXPECT_EQ((std::pair<std::string, std::string>("ORIGINATOR", "test bench")), table.keywords[0]);
    EXPECT_EQ((std::pair<std::string, std::string>("NUMBER_OF_FIELDS", "3")), table.keywords[1]);
    EXPECT_EQ((std::pair<std::string, std::string>("NUMBER_OF_SETS", "2")), table.keywords[2]);
    EXPECT_EQ((Strings{"SAMPLE_ID", "SAMPLE_NAME", "SPECTRAL_NM380"}), table.fields);
    EXPECT_EQ(6u, table.formatLine);
    ASSERT_EQ(2u, table.rows.size());
    EXPECT_EQ((Strings{"1", "paper white", "0.91"}), table.rows[0]);
    EXPECT_EQ((Strings{"2", "black", "0.02"}), table.rows[1]);
    EXPECT_EQ((std::vector<std::size_t>{9, 10}), table.lines);
}

TEST(CgatsReader, NameKeywordAndFieldLookup)
{
    std::istringstream input(kSmall);
    Cgats::Reader reader(input, "small.cgats");
    EXPECT_EQ("small.cgats", reader.Name());
    EXPECT_EQ("test bench", reader.Keyword("ORIGINATOR"));
    EXPECT_EQ("2", reader.Keyword("NUMBER_OF_SETS"));
    EXPECT_EQ("", reader.Keyword("CREATED"));
    EXPECT_EQ(0, reader.FieldIndex("SAMPLE_ID"));
    EXPECT_EQ(2, reader.FieldIndex("SPECTRAL_NM380"));
    EXPECT_EQ(-1, reader.FieldIndex("LAB_L"));
    // The exact name only.
    EXPECT_EQ(-1, reader.FieldIndex("sample_id"));
}

TEST(CgatsReader, CrlfLineEnds)
{
    std::string crlf;
    for (char c : kSmall) {
        if (c == '\n') {
            crlf += '\r';
        }
        crlf += c;
    }
    const Table lf = ReadText(kSmall);
    const Table table = ReadText(crlf);
    EXPECT_EQ(lf.identifier, table.identifier);
    EXPECT_EQ(lf.keywords, table.keywords);
    EXPECT_EQ(lf.fields, table.fields);
    EXPECT_EQ(lf.rows, table.rows);
    EXPECT_EQ(lf.lines, table.lines);
    EXPECT_EQ(lf.formatLine, table.formatLine);
    ASSERT_EQ(2u, table.rows.size());
    EXPECT_EQ("0.02", table.rows[1][2]);
}

// A byte-order mark before the first line, as editors write UTF-8, is no
// part of the identifier; the same bytes elsewhere are kept.
TEST(CgatsReader, ByteOrderMarkBeforeTheFirstLine)
{
    const Table plain = ReadText(kSmall);
    const Table marked = ReadText("\xEF\xBB\xBF" + std::string(kSmall));
    EXPECT_EQ("CGATS.17", marked.identifier);
    EXPECT_EQ(plain.keywords, marked.keywords);
    EXPECT_EQ(plain.rows, marked.rows);
    EXPECT_EQ(plain.lines, marked.lines);
    const Table blankFirst = ReadText("\xEF\xBB\xBF\n" + std::string(kSmall));
    EXPECT_EQ("CGATS.17", blankFirst.identifier);
    const Table inName = ReadText("CGATS.17\nBEGIN_DATA_FORMAT\nA B\nEND_DATA_FORMAT\nBEGIN_DATA\n1 "
                                  "\"\xEF\xBB\xBFx\"\n");
    ASSERT_EQ(1u, inName.rows.size());
    EXPECT_EQ("\xEF\xBB\xBFx", inName.rows[0][1]);
}

TEST(CgatsReader, TabInsideAQuotedValue)
{
    const Table table = ReadText("CGATS.17\nBEGIN_DATA_FORMAT\nA B\nEND_DATA_FORMAT\nBEGIN_DATA\n1\t\"a\tb\"\n");
    ASSERT_EQ(1u, table.rows.size());
    EXPECT_EQ("a\tb", table.rows[0][1]);
}

TEST(CgatsReader, CrlfWithoutFinalLineEnd)
{
    const Table table = ReadText("CGATS.17\r\nBEGIN_DATA_FORMAT\r\nA B\r\nEND_DATA_FORMAT\r\nBEGIN_DATA\r\n1 2\r\n3 4");
    EXPECT_EQ((std::vector<Strings>{{"1", "2"}, {"3", "4"}}), table.rows);
}

TEST(CgatsReader, CommentAndBlankLinesAnywhere)
{
    const Table table = ReadText("# written by a test\n"
                                 "\n"
                                 "CGATS.17\n"
                                 "# header comment\n"
                                 "ORIGINATOR \"bench\" # after a keyword\n"
                                 "\n"
                                 "BEGIN_DATA_FORMAT\n"
                                 "# inside the format\n"
                                 "SAMPLE_ID # first field\n"
                                 "SPECTRAL_NM380\n"
                                 "END_DATA_FORMAT\n"
                                 "BEGIN_DATA\n"
                                 "# inside the data\n"
                                 "\n"
                                 "1 0.5 # after a row\n"
                                 "   \t\n"
                                 "2 0.25\n"
                                 "END_DATA\n"
                                 "# after the end\n");
    EXPECT_EQ("CGATS.17", table.identifier);
    ASSERT_EQ(1u, table.keywords.size());
    EXPECT_EQ("bench", table.keywords[0].second);
    EXPECT_EQ((Strings{"SAMPLE_ID", "SPECTRAL_NM380"}), table.fields);
    EXPECT_EQ((std::vector<Strings>{{"1", "0.5"}, {"2", "0.25"}}), table.rows);
    EXPECT_EQ((std::vector<std::size_t>{15, 17}), table.lines);
}

TEST(CgatsReader, UnknownKeywordsAreKeptInFileOrder)
{
    std::istringstream input("CTI3\n"
                             "DEVICE_CLASS \"OUTPUT\"\n"
                             "MY_OWN_KEY \"value  with   blanks\"\n"
                             "WEIRD_NUMBER 42\n"
                             "TWO_WORDS first second\n"
                             "BEGIN_DATA_FORMAT\nSAMPLE_ID\nEND_DATA_FORMAT\nBEGIN_DATA\n1\nEND_DATA\n");
    Cgats::Reader reader(input, "keys.ti3");
    EXPECT_EQ("CTI3", reader.Identifier());
    ASSERT_EQ(4u, reader.Keywords().size());
    EXPECT_EQ("DEVICE_CLASS", reader.Keywords()[0].first);
    EXPECT_EQ("MY_OWN_KEY", reader.Keywords()[1].first);
    EXPECT_EQ("WEIRD_NUMBER", reader.Keywords()[2].first);
    EXPECT_EQ("OUTPUT", reader.Keyword("DEVICE_CLASS"));
    EXPECT_EQ("value  with   blanks", reader.Keyword("MY_OWN_KEY"));
    EXPECT_EQ("42", reader.Keyword("WEIRD_NUMBER"));
    EXPECT_EQ("first second", reader.Keyword("TWO_WORDS"));
}

TEST(CgatsReader, KeywordDeclarations)
{
    std::istringstream input("CGATS.17\n"
                             "KEYWORD \"MEAS_TYPE\"\n"
                             "MEAS_TYPE \"EMISSION\"\n"
                             "KEYWORD\t\"LAMP\"\n"
                             "LAMP\t\"D50 simulator\"\n"
                             "BEGIN_DATA_FORMAT\nSAMPLE_ID\nEND_DATA_FORMAT\nBEGIN_DATA\n1\nEND_DATA\n");
    Cgats::Reader reader(input, "declared.cgats");
    EXPECT_EQ("EMISSION", reader.Keyword("MEAS_TYPE"));
    EXPECT_EQ("D50 simulator", reader.Keyword("LAMP"));
    Cgats::Row row;
    ASSERT_TRUE(reader.Next(row));
    EXPECT_EQ(1u, row.values.size());
    EXPECT_FALSE(reader.Next(row));
}

TEST(CgatsReader, FieldsInAnyOrderAndExtraFields)
{
    std::istringstream input("CGATS.17\n"
                             "BEGIN_DATA_FORMAT\n"
                             "SPECTRAL_NM390 LAB_L SAMPLE_NAME SPECTRAL_NM380 SAMPLE_ID MY_FIELD\n"
                             "END_DATA_FORMAT\n"
                             "BEGIN_DATA\n"
                             "0.2 50.1 \"mid grey\" 0.1 7 x\n"
                             "END_DATA\n");
    Cgats::Reader reader(input, "order.cgats");
    ASSERT_EQ(6u, reader.Fields().size());
    const int id = reader.FieldIndex("SAMPLE_ID");
    const int name = reader.FieldIndex("SAMPLE_NAME");
    const int nm380 = reader.FieldIndex("SPECTRAL_NM380");
    const int extra = reader.FieldIndex("MY_FIELD");
    EXPECT_EQ(4, id);
    Cgats::Row row;
    ASSERT_TRUE(reader.Next(row));
    ASSERT_EQ(6u, row.values.size());
    EXPECT_EQ("7", row.values[static_cast<std::size_t>(id)]);
    EXPECT_EQ("mid grey", row.values[static_cast<std::size_t>(name)]);
    EXPECT_EQ("0.1", row.values[static_cast<std::size_t>(nm380)]);
    EXPECT_EQ("x", row.values[static_cast<std::size_t>(extra)]);
    EXPECT_EQ(6u, row.line);
}

TEST(CgatsReader, FormatSpreadOverSeveralLines)
{
    const Table table = ReadText("CGATS.17\n"
                                 "BEGIN_DATA_FORMAT SAMPLE_ID\n"
                                 "SPECTRAL_NM380\tSPECTRAL_NM390\n"
                                 "\n"
                                 "SPECTRAL_NM400\n"
                                 "SPECTRAL_NM410 END_DATA_FORMAT\n"
                                 "NUMBER_OF_SETS 1\n"
                                 "BEGIN_DATA\n"
                                 "1 0.1 0.2 0.3 0.4\n"
                                 "END_DATA\n",
                                 "spread.cgats");
    EXPECT_EQ((Strings{"SAMPLE_ID", "SPECTRAL_NM380", "SPECTRAL_NM390", "SPECTRAL_NM400", "SPECTRAL_NM410"}),
              table.fields);
    EXPECT_EQ(6u, table.formatLine);
    EXPECT_EQ((std::vector<Strings>{{"1", "0.1", "0.2", "0.3", "0.4"}}), table.rows);
    ASSERT_EQ(1u, table.keywords.size());
    EXPECT_EQ("NUMBER_OF_SETS", table.keywords[0].first);
}

TEST(CgatsReader, FormatAndDataOnOneLineEach)
{
    const Table table = ReadText("CGATS.17\n"
                                 "BEGIN_DATA_FORMAT SAMPLE_ID SPECTRAL_NM380 END_DATA_FORMAT\n"
                                 "BEGIN_DATA\n"
                                 "1 0.5\n"
                                 "END_DATA\n");
    EXPECT_EQ((Strings{"SAMPLE_ID", "SPECTRAL_NM380"}), table.fields);
    EXPECT_EQ(2u, table.formatLine);
    EXPECT_EQ((std::vector<Strings>{{"1", "0.5"}}), table.rows);
}

TEST(CgatsReader, TabsOrSpaces)
{
    const Table tabs = ReadText("CGATS.17\nORIGINATOR\t\"x y\"\nBEGIN_DATA_FORMAT\nA\tB\tC\nEND_DATA_FORMAT\n"
                                "BEGIN_DATA\n1\t\"two words\"\t3\nEND_DATA\n");
    const Table spaces = ReadText("CGATS.17\nORIGINATOR   \"x y\"\nBEGIN_DATA_FORMAT\n  A B    C\nEND_DATA_FORMAT\n"
                                  "BEGIN_DATA\n1 \t \"two words\"  3  \nEND_DATA\n");
    EXPECT_EQ(tabs.keywords, spaces.keywords);
    EXPECT_EQ(tabs.fields, spaces.fields);
    EXPECT_EQ(tabs.rows, spaces.rows);
    EXPECT_EQ((Strings{"1", "two words", "3"}), spaces.rows.at(0));
}

TEST(CgatsReader, MissingEndDataEndsAtTheEndOfTheInput)
{
    const Table table = ReadText("CGATS.17\nBEGIN_DATA_FORMAT\nA B\nEND_DATA_FORMAT\nBEGIN_DATA\n1 2\n3 4\n");
    EXPECT_EQ((std::vector<Strings>{{"1", "2"}, {"3", "4"}}), table.rows);
}

TEST(CgatsReader, NothingAfterEndDataIsRead)
{
    const Table table = ReadText("CGATS.17\nBEGIN_DATA_FORMAT\nA B\nEND_DATA_FORMAT\nBEGIN_DATA\n1 2\nEND_DATA\n"
                                 "5 6\nthis line has four tokens\n");
    EXPECT_EQ((std::vector<Strings>{{"1", "2"}}), table.rows);
}

TEST(CgatsReader, NoRowsAtAll)
{
    const Table table = ReadText("CGATS.17\nBEGIN_DATA_FORMAT\nA B\nEND_DATA_FORMAT\nBEGIN_DATA\nEND_DATA\n");
    EXPECT_TRUE(table.rows.empty());
}

TEST(CgatsReader, QuotedValuesWithBlanksAndHashes)
{
    const Table table = ReadText("CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID SAMPLE_NAME X\nEND_DATA_FORMAT\nBEGIN_DATA\n"
                                 "1 \"white 9.5 (.05 D)\" 0.9\n"
                                 "2 \"#2 in the row\" 0.1\n"
                                 "3 \"\" 0.2\n"
                                 "END_DATA\n");
    ASSERT_EQ(3u, table.rows.size());
    EXPECT_EQ("white 9.5 (.05 D)", table.rows[0][1]);
    EXPECT_EQ("#2 in the row", table.rows[1][1]);
    EXPECT_EQ("", table.rows[2][1]);
}

TEST(CgatsReader, OtherFirstLineIdentifiers)
{
    EXPECT_EQ("CTI3", ReadText("CTI3 \nBEGIN_DATA_FORMAT\nA\nEND_DATA_FORMAT\nBEGIN_DATA\n1\n").identifier);
    EXPECT_EQ("IT8.7/2", ReadText("IT8.7/2\nBEGIN_DATA_FORMAT\nA\nEND_DATA_FORMAT\nBEGIN_DATA\n1\n").identifier);
}

TEST(CgatsReader, ARowOfAThousandFieldsAndManyRows)
{
    std::string text = "CGATS.17\nBEGIN_DATA_FORMAT\n";
    for (int i = 0; i < 1000; ++i) {
        text += "F" + std::to_string(i) + ' ';
    }
    text += "\nEND_DATA_FORMAT\nBEGIN_DATA\n";
    for (int r = 0; r < 200; ++r) {
        for (int i = 0; i < 1000; ++i) {
            text += std::to_string(r + i) + '\t';
        }
        text += '\n';
    }
    std::istringstream input(text);
    Cgats::Reader reader(input, "wide.cgats");
    ASSERT_EQ(1000u, reader.Fields().size());
    Cgats::Row row;
    std::size_t rows = 0;
    while (reader.Next(row)) {
        ASSERT_EQ(1000u, row.values.size());
        EXPECT_EQ(std::to_string(rows + 999), row.values[999]);
        ++rows;
    }
    EXPECT_EQ(200u, rows);
}

// ----------------------------------------------------------- Reader, broken

TEST(CgatsReaderBroken, EmptyInput)
{
    const Cgats::Error error = FailureOf("", "empty.cgats");
    EXPECT_EQ("empty.cgats", error.File());
    EXPECT_EQ(0u, error.Line());
    EXPECT_TRUE(StartsWith(error.Message(), "not a CGATS file")) << error.Message();
}

TEST(CgatsReaderBroken, OnlyCommentsAndBlankLines)
{
    const Cgats::Error error = FailureOf("# nothing\n\n   \n# here\n", "comments.cgats");
    EXPECT_EQ("comments.cgats", error.File());
    EXPECT_TRUE(StartsWith(error.Message(), "not a CGATS file")) << error.Message();
}

TEST(CgatsReaderBroken, ProseIsNotCgats)
{
    const Cgats::Error error =
        FailureOf("Dear customer, please find the measurements attached.\nBest regards\n", "letter.txt");
    EXPECT_EQ("letter.txt", error.File());
    EXPECT_EQ(1u, error.Line());
    EXPECT_TRUE(StartsWith(error.Message(), "not a CGATS file")) << error.Message();
}

TEST(CgatsReaderBroken, TwoWordTextWithoutFormatIsNotCgats)
{
    const Cgats::Error error = FailureOf("Hello world\nnothing else\n", "hello.txt");
    EXPECT_EQ("hello.txt", error.File());
    EXPECT_TRUE(StartsWith(error.Message(), "not a CGATS file")) << error.Message();
}

TEST(CgatsReaderBroken, BinaryIsNotCgats)
{
    const Cgats::Error error = FailureOf(std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), "image.png");
    EXPECT_EQ(1u, error.Line());
    EXPECT_TRUE(StartsWith(error.Message(), "not a CGATS file")) << error.Message();
}

TEST(CgatsReaderBroken, FormatOnTheFirstLineIsNotCgats)
{
    const Cgats::Error error = FailureOf("BEGIN_DATA_FORMAT\nA\nEND_DATA_FORMAT\nBEGIN_DATA\n1\n", "headless.cgats");
    EXPECT_EQ(1u, error.Line());
    EXPECT_TRUE(StartsWith(error.Message(), "not a CGATS file")) << error.Message();
}

TEST(CgatsReaderBroken, BeginDataBeforeTheFormat)
{
    const Cgats::Error error =
        FailureOf("CGATS.17\nORIGINATOR \"x\"\nBEGIN_DATA\n1 2\nEND_DATA\n", "early.cgats");
    ExpectError(error, "early.cgats", 3, "BEGIN_DATA before BEGIN_DATA_FORMAT");
}

TEST(CgatsReaderBroken, NoBeginData)
{
    const Cgats::Error error = FailureOf("CGATS.17\nBEGIN_DATA_FORMAT\nA B\nEND_DATA_FORMAT\n", "nodata.cgats");
    EXPECT_EQ("nodata.cgats", error.File());
    EXPECT_EQ("no BEGIN_DATA", error.Message());
}

TEST(CgatsReaderBroken, NoFormat)
{
    const Cgats::Error error = FailureOf("CGATS.17\nORIGINATOR \"x\"\n", "noformat.cgats");
    EXPECT_TRUE(StartsWith(error.Message(), "not a CGATS file")) << error.Message();
}

TEST(CgatsReaderBroken, FormatWithoutFields)
{
    const Cgats::Error error =
        FailureOf("CGATS.17\nBEGIN_DATA_FORMAT\nEND_DATA_FORMAT\nBEGIN_DATA\nEND_DATA\n", "nofields.cgats");
    ExpectError(error, "nofields.cgats", 4, "the data format names no fields");
}

TEST(CgatsReaderBroken, SecondFormat)
{
    const Cgats::Error error = FailureOf(
        "CGATS.17\nBEGIN_DATA_FORMAT\nA\nEND_DATA_FORMAT\nBEGIN_DATA_FORMAT\nB\nEND_DATA_FORMAT\nBEGIN_DATA\n",
        "twice.cgats");
    ExpectError(error, "twice.cgats", 5, "a second BEGIN_DATA_FORMAT");
}

TEST(CgatsReaderBroken, EndWithoutBegin)
{
    ExpectError(FailureOf("CGATS.17\nEND_DATA_FORMAT\n", "end.cgats"), "end.cgats", 2,
                "END_DATA_FORMAT without its BEGIN");
    ExpectError(FailureOf("CGATS.17\nX 1\nEND_DATA\n", "end.cgats"), "end.cgats", 3, "END_DATA without its BEGIN");
}

TEST(CgatsReaderBroken, RowWithTooFewValues)
{
    const std::string text = "CGATS.17\n"
                             "# a comment\n"
                             "BEGIN_DATA_FORMAT\n"
                             "SAMPLE_ID SAMPLE_NAME SPECTRAL_NM380\n"
                             "END_DATA_FORMAT\n"
                             "BEGIN_DATA\n"
                             "1 \"full row\" 0.5\n"
                             "2 0.5\n"
                             "3 \"after\" 0.5\n"
                             "END_DATA\n";
    std::istringstream input(text);
    Cgats::Reader reader(input, "few.cgats");
    Cgats::Row row;
    // The good row before the broken one arrives first.
    ASSERT_TRUE(reader.Next(row));
    EXPECT_EQ(7u, row.line);
    try {
        reader.Next(row);
        FAIL() << "a short row was accepted";
    } catch (const Cgats::Error& error) {
        ExpectError(error, "few.cgats", 8, "the row has 2 values for 3 fields");
    }
}

TEST(CgatsReaderBroken, RowWithTooManyValues)
{
    const Cgats::Error error = FailureOf("CGATS.17\r\n"
                                         "BEGIN_DATA_FORMAT\r\n"
                                         "SAMPLE_ID SPECTRAL_NM380\r\n"
                                         "END_DATA_FORMAT\r\n"
                                         "BEGIN_DATA\r\n"
                                         "1 0.5\r\n"
                                         "\r\n"
                                         "2 0.5 0.7 0.9\r\n",
                                         "many.cgats");
    ExpectError(error, "many.cgats", 8, "the row has 4 values for 2 fields");
}

TEST(CgatsReaderBroken, UnquotedNameWithBlanksIsTooManyValues)
{
    const Cgats::Error error =
        FailureOf("CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID SAMPLE_NAME\nEND_DATA_FORMAT\nBEGIN_DATA\n1 dark skin\n",
                  "unquoted.cgats");
    ExpectError(error, "unquoted.cgats", 6, "the row has 3 values for 2 fields");
}

// -------------------------------------------------------------------- Writer

TEST(CgatsQuote, QuotesAndReplacesWhatWouldBreakTheLine)
{
    EXPECT_EQ("\"plain\"", Cgats::Quote("plain"));
    EXPECT_EQ("\"\"", Cgats::Quote(""));
    EXPECT_EQ("\"say 'hi'\"", Cgats::Quote("say \"hi\""));
    // A tab stays inside the quotes, where the reader keeps it; line ends
    // cannot.
    EXPECT_EQ("\"a\tb c d\"", Cgats::Quote("a\tb\nc\rd"));
}

TEST(CgatsWriter, WritesTheLayout)
{
    std::ostringstream output;
    Cgats::Writer writer(output);
    writer.Begin("CGATS.17", {{"ORIGINATOR", "bench"}, {"MY_KEY", "two words"}, {"WEIGHT", "2.5"}},
                 {"first comment"}, {"SAMPLE_ID", "SAMPLE_NAME", "LAB_L"}, 2);
    writer.WriteRow({"1", "paper", "95.1"}, {false, true, false});
    writer.WriteRow({"2", "black ink", "12.0"}, {false, true, false});
    writer.End();
    std::istringstream lines(output.str());
    Strings all;
    for (std::string line; std::getline(lines, line);) {
        all.push_back(line);
    }
    ASSERT_FALSE(all.empty());
    EXPECT_EQ("CGATS.17", all.front());
    EXPECT_EQ("END_DATA", all.back());
    const auto index = [&](const std::string& line) {
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (all[i] == line) {
                return static_cast<int>(i);
            }
        }
        return -1;
    };
    // A standard keyword goes undeclared; another one is declared first.
    EXPECT_EQ(-1, index("KEYWORD\t\"ORIGINATOR\""));
    EXPECT_GE(index("ORIGINATOR\t\"bench\""), 0);
    EXPECT_GE(index("KEYWORD\t\"MY_KEY\""), 0);
    EXPECT_LT(index("KEYWORD\t\"MY_KEY\""), index("MY_KEY\t\"two words\""));
    // A number is not quoted.
    EXPECT_GE(index("WEIGHT\t2.5"), 0);
    EXPECT_GE(index("# first comment"), 0);
    EXPECT_GE(index("NUMBER_OF_FIELDS\t3"), 0);
    EXPECT_GE(index("NUMBER_OF_SETS\t2"), 0);
    EXPECT_LT(index("BEGIN_DATA_FORMAT"), index("END_DATA_FORMAT"));
    EXPECT_LT(index("END_DATA_FORMAT"), index("BEGIN_DATA"));
    EXPECT_EQ(index("BEGIN_DATA") + 1, index("1\t\"paper\"\t95.1"));
    EXPECT_EQ(index("BEGIN_DATA") + 2, index("2\t\"black ink\"\t12.0"));
    EXPECT_EQ(index("BEGIN_DATA") + 3, index("END_DATA"));
}

TEST(CgatsWriter, RoundTrip)
{
    const std::vector<std::pair<std::string, std::string>> keywords = {
        {"ORIGINATOR", "round trip"},     {"DESCRIPTOR", "text with  two blanks and # a hash"},
        {"CREATED", "2024-05-01"},        {"MEAS_TYPE", "EMISSION"},
        {"NUMBER_LIKE", "-12,5"},         {"EMPTY", ""},
        {"ANOTHER_KEY", "0.000123"}};
    const Strings fields = {"SAMPLE_ID", "SAMPLE_NAME", "SPECTRAL_NM380", "SPECTRAL_NM390", "NOTE"};
    const std::vector<Strings> rows = {
        {"1", "white 9.5 (.05 D)", "0.91234", "0.9", "#not a comment"},
        {"2", "", "-0.001", "1e-05", "tab\tinside"},
        {"3", "  leading and trailing  ", "0,5", "100", "x"},
        {"A4", "say \"cheese\"", "0", "+1", "END_DATA"},
    };
    const std::vector<bool> text = {false, true, false, false, true};
    std::ostringstream output;
    Cgats::Writer writer(output);
    writer.Begin("CGATS.17", keywords, {"a comment", "another comment"}, fields, rows.size());
    for (const Strings& row : rows) {
        writer.WriteRow(row, text);
    }
    writer.End();

    const Table table = ReadText(output.str(), "written.cgats");
    EXPECT_EQ("CGATS.17", table.identifier);
    EXPECT_EQ(fields, table.fields);
    for (const auto& [key, value] : keywords) {
        bool found = false;
        for (const auto& [k, v] : table.keywords) {
            if (k == key) {
                EXPECT_EQ(value, v) << key;
                found = true;
            }
        }
        EXPECT_TRUE(found) << key;
    }
    std::istringstream again(output.str());
    Cgats::Reader reader(again, "written.cgats");
    EXPECT_EQ("4", reader.Keyword("NUMBER_OF_SETS"));
    EXPECT_EQ("5", reader.Keyword("NUMBER_OF_FIELDS"));

    ASSERT_EQ(rows.size(), table.rows.size());
    for (std::size_t r = 0; r < rows.size(); ++r) {
        Strings expected = rows[r];
        // Text loses what a quoted value cannot hold: double quotes become
        // single ones. A tab stays.
        for (std::string& value : expected) {
            for (char& c : value) {
                c = c == '"' ? '\'' : c;
            }
        }
        EXPECT_EQ(expected, table.rows[r]) << "row " << r;
    }
}

TEST(CgatsWriter, RoundTripOfASampleFile)
{
    const std::string path = std::string(QVIMANAGER_SAMPLE_DIR) + "/chart24_ohta.cgats";
    std::ifstream file(path, std::ios::binary);
    ASSERT_TRUE(file) << path;
    const Table original = ReadAll(file, path);
    std::vector<std::pair<std::string, std::string>> keywords;
    for (const auto& entry : original.keywords) {
        if (entry.first != "NUMBER_OF_FIELDS" && entry.first != "NUMBER_OF_SETS") {
            keywords.push_back(entry);
        }
    }
    std::vector<bool> text(original.fields.size(), false);
    text[static_cast<std::size_t>(std::find(original.fields.begin(), original.fields.end(), "SAMPLE_NAME") -
                                  original.fields.begin())] = true;
    std::ostringstream output;
    Cgats::Writer writer(output);
    writer.Begin(original.identifier, keywords, {}, original.fields, original.rows.size());
    for (const Strings& row : original.rows) {
        writer.WriteRow(row, text);
    }
    writer.End();
    const Table copy = ReadText(output.str(), "copy.cgats");
    EXPECT_EQ(original.identifier, copy.identifier);
    EXPECT_EQ(original.fields, copy.fields);
    EXPECT_EQ(original.rows, copy.rows);
    EXPECT_EQ(original.keywords.size(), copy.keywords.size());
    for (const auto& [key, value] : original.keywords) {
        std::istringstream again(output.str());
        Cgats::Reader reader(again, "copy.cgats");
        EXPECT_EQ(value, reader.Keyword(key)) << key;
    }
}

// ----------------------------------------------------------- sample files

// Every bundled sample reads to its end: as many rows as NUMBER_OF_SETS
// says, each with a value for every field, and a number for every band.
TEST(CgatsSamples, EverySampleFileReadsCompletely)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(QVIMANAGER_SAMPLE_DIR)) {
        if (entry.path().extension() == ".cgats") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    ASSERT_GE(files.size(), 6u);
    for (const auto& path : files) {
        SCOPED_TRACE(path.string());
        std::ifstream file(path, std::ios::binary);
        ASSERT_TRUE(file);
        Cgats::Reader reader(file, path.filename().string());
        EXPECT_EQ("CGATS.17", reader.Identifier());
        const std::size_t sets = std::stoul(reader.Keyword("NUMBER_OF_SETS"));
        const std::size_t fieldCount = std::stoul(reader.Keyword("NUMBER_OF_FIELDS"));
        EXPECT_EQ(fieldCount, reader.Fields().size());
        std::vector<int> bands;
        for (std::size_t i = 0; i < reader.Fields().size(); ++i) {
            const int wavelength = Cgats::SpectralWavelength(reader.Fields()[i]);
            if (wavelength > 0) {
                bands.push_back(static_cast<int>(i));
                EXPECT_EQ(380 + 10 * static_cast<int>(bands.size() - 1), wavelength);
            }
        }
        EXPECT_EQ(36u, bands.size());
        const int id = reader.FieldIndex("SAMPLE_ID");
        ASSERT_GE(id, 0);
        const bool emission = reader.Keyword("MEAS_TYPE") == "EMISSION";
        Cgats::Row row;
        std::size_t rows = 0;
        std::size_t badNumbers = 0;
        std::size_t outOfRange = 0;
        while (reader.Next(row)) {
            ++rows;
            EXPECT_EQ(std::to_string(rows), row.values[static_cast<std::size_t>(id)]);
            for (int band : bands) {
                double value = 0.0;
                if (!Cgats::ParseNumber(row.values[static_cast<std::size_t>(band)], value)) {
                    ++badNumbers;
                } else if (!emission && (value < 0.0 || value > 1.0)) {
                    ++outOfRange;
                }
            }
        }
        EXPECT_EQ(sets, rows);
        EXPECT_EQ(0u, badNumbers);
        EXPECT_EQ(0u, outOfRange);
    }
}

} // namespace

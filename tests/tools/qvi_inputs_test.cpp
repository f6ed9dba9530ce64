// qvi on the inputs that real instruments and print standards bring:
// spectra measured over 400..700 nm only or on finer grids, Lab files,
// CIEDE2000; and the command line around them.

#include "tests/tools/qvi_harness.h"

#include <gtest/gtest.h>

namespace {

using namespace qvi_test;

// The chart with only the spectral fields of [from, to] nm (10 nm points),
// and every other field as it was.
std::string Narrowed(const Table& table, int from, int to)
{
    Table narrowed;
    narrowed.identifier = table.identifier;
    narrowed.keywords = table.keywords;
    std::vector<std::size_t> keep;
    for (std::size_t f = 0; f < table.fields.size(); ++f) {
        const int wavelength = Cgats::SpectralWavelength(table.fields[f]);
        if (wavelength == 0 || (wavelength >= from && wavelength <= to)) {
            keep.push_back(f);
            narrowed.fields.push_back(table.fields[f]);
        }
    }
    for (const Strings& row : table.rows) {
        Strings values;
        for (std::size_t f : keep) {
            values.push_back(row[f]);
        }
        narrowed.rows.push_back(values);
    }
    return Rewrite(narrowed, Layout{});
}

// The rows of an output, from its data format on: what does not depend on
// the input's name.
std::string Data(const std::string& text)
{
    return text.substr(text.find("NUMBER_OF_FIELDS"));
}

using QviGrids = QviTest;

// Many instruments measure 400..700 nm: the ends take the nearest measured
// value, as if the file had said so itself, and qvi says it did that.
TEST_F(QviGrids, FourHundredToSevenHundredIsExtendedAndSaidSo)
{
    const Table chart = Sample(kOtherChart);
    Put("short.cgats", Narrowed(chart, 400, 700));
    // The same chart with the ends written out: 380 and 390 as 400, 710 to
    // 730 as 700.
    Table filled = chart;
    for (Strings& row : filled.rows) {
        for (std::size_t f = 0; f < filled.fields.size(); ++f) {
            const int wavelength = Cgats::SpectralWavelength(filled.fields[f]);
            if (wavelength == 380 || wavelength == 390) {
                row[f] = row[filled.Field("SPECTRAL_NM400")];
            } else if (wavelength > 700) {
                row[f] = row[filled.Field("SPECTRAL_NM700")];
            }
        }
    }
    Put("filled.cgats", Rewrite(filled, Layout{}));
    for (const Strings& options : {Strings{}, Strings{"--illuminant", "D50", "--space", "CIEXYZ"},
                                   Strings{"--format", "json"}}) {
        Strings shortRun = {"color", "short.cgats"};
        Strings filledRun = {"color", "filled.cgats"};
        shortRun.insert(shortRun.end(), options.begin(), options.end());
        filledRun.insert(filledRun.end(), options.begin(), options.end());
        const Outcome outcome = Qvi(shortRun, dir);
        EXPECT_SUCCESS(outcome);
        EXPECT_TRUE(Contains(outcome.err, "qvi: short.cgats: measured 400..700 nm; the rest of 380..730 nm takes the "
                                          "nearest measured value (380..390 nm from 400 nm, 710..730 nm from 700 "
                                          "nm)\n"))
            << outcome;
        const std::string expected = Qvi(filledRun, dir).out;
        if (options.empty()) {
            const Table table = ParseCgats(outcome.out);
            EXPECT_EQ("380..390 nm from 400 nm, 710..730 nm from 700 nm", table.Keyword("SPECTRAL_EXTENSION"));
            EXPECT_EQ(Data(expected), Data(outcome.out));
        } else if (options.back() == "json") {
            const Json json = ParseJson(outcome.out);
            EXPECT_EQ("380..390 nm from 400 nm, 710..730 nm from 700 nm", json["header"]["SPECTRAL_EXTENSION"].text);
            EXPECT_EQ(expected.substr(expected.find("\"rows\"")), outcome.out.substr(outcome.out.find("\"rows\"")));
        } else {
            EXPECT_EQ(Data(expected), Data(outcome.out));
        }
    }
    // One end only.
    Put("upper.cgats", Narrowed(chart, 380, 700));
    const Outcome upper = Qvi({"density", "upper.cgats", "--paper-white", "19"}, dir);
    EXPECT_SUCCESS(upper);
    EXPECT_EQ("710..730 nm from 700 nm", ParseCgats(upper.out).Keyword("SPECTRAL_EXTENSION"));
    // A full file says nothing of it.
    EXPECT_FALSE(ParseCgats(Qvi({"color", kOtherChart}).out).HasKeyword("SPECTRAL_EXTENSION"));
}

TEST_F(QviGrids, LessThanFourHundredToSevenHundredIsRefused)
{
    const Table chart = Sample(kOtherChart);
    const std::vector<std::tuple<int, int, std::string>> cases = {
        {410, 730, "no spectral field for 400 nm"},
        {380, 690, "no spectral field for 700 nm"},
        {420, 680, "no spectral field for 400 nm"}};
    for (const auto& [from, to, message] : cases) {
        SCOPED_TRACE(message);
        const std::string text = Narrowed(chart, from, to);
        Put("narrow.cgats", text);
        const Outcome outcome = Qvi({"color", "narrow.cgats"}, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_TRUE(StartsWith(outcome.err, "qvi: narrow.cgats:" + std::to_string(LineNumber(text, "END_DATA_FORMAT")) +
                                                ": " + message + " (fields such as SPECTRAL_NM400"))
            << outcome;
    }
    // A gap between measured points is no end to fill.
    std::string text = Rewrite(chart, Layout{});
    text.replace(text.find("SPECTRAL_NM390"), 14, "SPECTRAL_NM395");
    Put("gap.cgats", text);
    const Outcome gap = Qvi({"color", "gap.cgats"}, dir);
    EXPECT_FAILURE(gap, 2);
    EXPECT_TRUE(Contains(gap.err, ": no spectral field for 390 nm, though 380 nm is there")) << gap;
}

// A 5 nm or 1 nm file gives its 10 nm points; what lies between them is not
// read (here it is far off any scale).
TEST_F(QviGrids, FinerGridsGiveTheirTenNanometrePoints)
{
    const Table chart = Sample(kOtherChart);
    for (int step : {5, 1}) {
        SCOPED_TRACE(step);
        Table fine;
        fine.identifier = chart.identifier;
        fine.fields = {"SAMPLE_ID", "SAMPLE_NAME"};
        for (int wavelength = 380; wavelength <= 730; wavelength += step) {
            fine.fields.push_back("SPECTRAL_NM" + std::to_string(wavelength));
        }
        for (const Strings& row : chart.rows) {
            Strings values = {row[0], row[1]};
            for (int wavelength = 380; wavelength <= 730; wavelength += step) {
                values.push_back(wavelength % 10 == 0 ? row[chart.Field("SPECTRAL_NM" + std::to_string(wavelength))]
                                                      : "97.5");
            }
            fine.rows.push_back(values);
        }
        Put("fine.cgats", Rewrite(fine, Layout{}));
        const Outcome outcome = Qvi({"color", "fine.cgats"}, dir);
        EXPECT_SUCCESS(outcome);
        EXPECT_EQ(Data(Qvi({"color", kOtherChart}).out), Data(outcome.out));
    }
    EXPECT_TRUE(Contains(Qvi({"--help"}).out, "5 nm and 1 nm files give their\n  10 nm points"));
}

// =============================================================== Lab files

using QviLabFiles = QviTest;

// A Lab file as print standards and characterisation targets bring it: the
// chart's Lab values under D50, no spectra.
std::string LabFile(const std::string& chart)
{
    const Outcome outcome = Qvi({"color", chart, "--illuminant", "D50", "--decimals", "6", "-q"});
    EXPECT_EQ(0, outcome.status) << outcome;
    return outcome.out;
}

TEST_F(QviLabFiles, ColorConvertsFromLab)
{
    Put("lab.cgats", LabFile(kOtherChart));
    for (const char* space : {"CIELab", "CIELCh", "CIEXYZ", "CIExyY", "CIEuvY1960", "CIEuvY1976", "RGB"}) {
        SCOPED_TRACE(space);
        const Outcome fromLab = Qvi({"color", "lab.cgats", "--illuminant", "D50", "--space", space}, dir);
        EXPECT_SUCCESS(fromLab);
        EXPECT_EQ("qvi: lab.cgats: Lab values taken as measured under D50, TwoDegree (--illuminant and --observer "
                  "set them)\n",
                  fromLab.err);
        const Table table = ParseCgats(fromLab.out);
        EXPECT_EQ("CIELab", table.Keyword("INPUT_VALUES"));
        EXPECT_FALSE(table.HasKeyword("REFLECTANCE_SCALE"));
        const Table fromSpectra =
            ParseCgats(Qvi({"color", kOtherChart, "--illuminant", "D50", "--space", space, "-q"}).out);
        ASSERT_EQ(fromSpectra.fields, table.fields);
        ASSERT_EQ(24u, table.rows.size());
        for (std::size_t r = 0; r < 24; ++r) {
            for (std::size_t f = 2; f < 5; ++f) {
                // Lab written with 6 decimals, then converted; the hue of a
                // near-grey moves most.
                const double tolerance =
                    std::string(space) == "RGB" ? 1.0 : table.fields[f] == "LAB_H" ? 1e-3 : 2e-4;
                EXPECT_NEAR(Number(fromSpectra.rows[r][f]), Number(table.rows[r][f]), tolerance)
                    << r << " " << table.fields[f];
            }
        }
    }
}

TEST_F(QviLabFiles, WhatCannotStartFromLabIsRefusedWithTheReason)
{
    Put("lab.cgats", LabFile(kOtherChart));
    const Outcome luv = Qvi({"color", "lab.cgats", "--space", "CIELuv"}, dir);
    EXPECT_FAILURE(luv, 1);
    EXPECT_EQ("qvi: --space CIELuv: Conversion not supported from ColorSpace CIELab to ColorSpace CIEXYZ; from Lab "
              "values give CIELab, CIELCh, CIEXYZ, CIExyY, CIEuvY1960, CIEuvY1976, RGB, or give spectra\n",
              BeyondNotes(luv.err));
    const Outcome cmc = Qvi({"delta-e", "lab.cgats", SamplePath(kOtherChart), "--formula", "CMC"}, dir);
    EXPECT_FAILURE(cmc, 1);
    EXPECT_EQ("qvi: --formula CMC: CMetryCalculator; with Lab values give --formula CIELab, 94 or 2000, or give "
              "spectra in both files\n",
              BeyondNotes(cmc.err));
    for (const char* command : {"density", "cct"}) {
        const Outcome outcome = Qvi({command, "lab.cgats"}, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ(std::string("qvi: lab.cgats: holds Lab values (LAB_L, LAB_A, LAB_B); qvi ") + command +
                      " needs spectra\n",
                  outcome.err);
    }
    const Outcome paper = Qvi({"color", "lab.cgats", "--paper-white", "19"}, dir);
    EXPECT_FAILURE(paper, 2);
    EXPECT_EQ("qvi: --paper-white needs spectra; lab.cgats holds Lab values\n", paper.err);
}

// A Lab value is read as a float: a word is no number, and a number beyond
// a float is out of range.
TEST_F(QviLabFiles, LabValuesAreChecked)
{
    for (const auto& [value, expected] : std::vector<std::pair<std::string, std::string>>{
             {"abc", "is not a number"},
             {"1e39", "is out of range: a float holds 0 and magnitudes from 1.2e-38 to 3.4e38"},
             {"1e400", "is out of range: a float holds 0 and magnitudes from 1.2e-38 to 3.4e38"},
             {"1e-50", "is out of range: a float holds 0 and magnitudes from 1.2e-38 to 3.4e38"}}) {
        SCOPED_TRACE(value);
        Put("lab.cgats", "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\n"
                         "1 50 0 0\n2 50 " +
                             value + " 0\nEND_DATA\n");
        const Outcome outcome = Qvi({"color", "lab.cgats", "-q"}, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ("qvi: lab.cgats:7: the value \"" + value + "\" of LAB_A " + expected + "\n", outcome.err);
    }
}

// delta-e takes a Lab file as reference or as samples: the spectra of the
// other file go to Lab under the run's conditions.
TEST_F(QviLabFiles, DeltaEAgainstLabValues)
{
    Put("lab.cgats", LabFile(kOtherChart));
    for (const char* formula : {"CIELab", "94", "2000"}) {
        SCOPED_TRACE(formula);
        // The Lab file in the place of the chart it came from; CIE94 weighs
        // by the reference, so the order counts.
        const std::vector<std::pair<Strings, Strings>> orders = {
            {{SamplePath(kChart), "lab.cgats"}, {SamplePath(kChart), SamplePath(kOtherChart)}},
            {{"lab.cgats", SamplePath(kChart)}, {SamplePath(kOtherChart), SamplePath(kChart)}}};
        for (const auto& [order, spectralOrder] : orders) {
            const Table spectral = ParseCgats(Qvi({"delta-e", spectralOrder[0], spectralOrder[1], "--illuminant", "D50",
                                                   "--formula", formula, "--decimals", "6"})
                                                  .out);
            const Outcome outcome = Qvi({"delta-e", order[0], order[1], "--illuminant", "D50", "--formula", formula,
                                         "--decimals", "6"},
                                        dir);
            EXPECT_SUCCESS(outcome);
            const Table table = ParseCgats(outcome.out);
            ASSERT_EQ(24u, table.rows.size());
            for (std::size_t r = 0; r < 24; ++r) {
                EXPECT_NEAR(spectral.At(r, "DELTA_E"), table.At(r, "DELTA_E"), 2e-4) << r;
            }
        }
    }
    // The same chart as spectra and as its own Lab values: no difference.
    const Table same = ParseCgats(Qvi({"delta-e", "lab.cgats", SamplePath(kOtherChart), "--illuminant", "D50"}, dir).out);
    EXPECT_EQ("0.0000", same.Keyword("DELTA_E_MAX"));
    EXPECT_EQ("CIELab", same.Keyword("REFERENCE_INPUT_VALUES"));
    EXPECT_EQ("0..1", same.Keyword("SAMPLES_REFLECTANCE_SCALE"));
}

// ================================================================ CIEDE2000

using QviCiede2000 = QviTest;

// The 34 published pairs as two Lab files, one colour of each pair in each.
TEST_F(QviCiede2000, ThePublishedPairsInBothOrders)
{
    const std::string csv = ReadFile(QVIMANAGER_CIEDE2000_DIR "/sharma2005_table1.csv");
    const Strings lines = Lines(csv);
    ASSERT_EQ(35u, lines.size());
    std::string first = "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\n";
    std::string second = first;
    std::vector<std::string> published;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        Strings cells;
        std::stringstream row(lines[i]);
        for (std::string cell; std::getline(row, cell, ',');) {
            cells.push_back(cell);
        }
        ASSERT_EQ(7u, cells.size());
        const std::string id = std::to_string(i);
        first += id + " " + cells[0] + " " + cells[1] + " " + cells[2] + "\n";
        second += id + " " + cells[3] + " " + cells[4] + " " + cells[5] + "\n";
        published.push_back(cells[6]);
    }
    Put("first.cgats", first + "END_DATA\n");
    Put("second.cgats", second + "END_DATA\n");
    for (const Strings& order : {Strings{"first.cgats", "second.cgats"}, Strings{"second.cgats", "first.cgats"}}) {
        const Outcome outcome = Qvi({"delta-e", order[0], order[1], "--formula", "2000", "-q"}, dir);
        EXPECT_SILENT_SUCCESS(outcome);
        const Table table = ParseCgats(outcome.out);
        EXPECT_EQ("CIEDE2000", table.Keyword("DELTA_E_FORMULA"));
        EXPECT_EQ("1:1:1", table.Keyword("DELTA_E_K00"));
        ASSERT_EQ(34u, table.rows.size());
        for (std::size_t r = 0; r < 34; ++r) {
            EXPECT_EQ(published[r], table.Value(r, "DELTA_E")) << "pair " << r + 1;
        }
    }
    // Through the condition key as well.
    EXPECT_EQ(Qvi({"delta-e", "first.cgats", "second.cgats", "--formula", "2000", "-q"}, dir).out,
              Qvi({"delta-e", "first.cgats", "second.cgats", "--condition",
                   "ColorSpaceDescription.DeltaEFormula=2000", "-q"},
                  dir)
                  .out);
}

TEST_F(QviCiede2000, WeightsDivideTheirTerms)
{
    Put("a.cgats", "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\n"
                   "1 50 0 0\nEND_DATA\n");
    Put("b.cgats", "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\n"
                   "1 54 0 0\nEND_DATA\n");
    const auto difference = [&](const std::string& weights) {
        const Outcome outcome =
            Qvi({"delta-e", "a.cgats", "b.cgats", "--formula", "2000", "--k00", weights, "--decimals", "6", "-q"}, dir);
        EXPECT_SILENT_SUCCESS(outcome);
        return ParseCgats(outcome.out).At(0, "DELTA_E");
    };
    const double plain = difference("1:1:1");
    EXPECT_GT(plain, 3.0);
    EXPECT_NEAR(plain / 2.0, difference("2:1:1"), 1e-6);
    EXPECT_NEAR(plain, difference("1:3:5"), 1e-6);
    for (const char* bad : {"0:1:1", "1:1", "a:1:1", "1:-1:1"}) {
        EXPECT_FAILURE(Qvi({"delta-e", "a.cgats", "b.cgats", "--formula", "2000", "--k00", bad}, dir), 2);
    }
}

// From spectra, CIEDE2000 of the Lab values the spectra give.
TEST_F(QviCiede2000, FromSpectraThroughTheirLabValues)
{
    Put("a.cgats", LabFile(kChart));
    Put("b.cgats", LabFile(kOtherChart));
    const Table spectra =
        ParseCgats(Qvi({"delta-e", kChart, kOtherChart, "--formula", "2000", "--illuminant", "D50", "--decimals", "6"})
                       .out);
    const Table lab = ParseCgats(
        Qvi({"delta-e", "a.cgats", "b.cgats", "--formula", "2000", "--illuminant", "D50", "--decimals", "6"}, dir).out);
    ASSERT_EQ(24u, spectra.rows.size());
    for (std::size_t r = 0; r < 24; ++r) {
        EXPECT_NEAR(lab.At(r, "DELTA_E"), spectra.At(r, "DELTA_E"), 1e-4) << r;
    }
    // CIEDE2000 is not CIELab distance.
    const Table distance = ParseCgats(Qvi({"delta-e", kChart, kOtherChart, "--illuminant", "D50"}).out);
    EXPECT_NE(distance.Keyword("DELTA_E_MEAN"), spectra.Keyword("DELTA_E_MEAN"));
}

// ============================================================ command line

using QviCommandLine = QviTest;

TEST_F(QviCommandLine, AnOptionThatDoesNotApplyIsRefused)
{
    const std::vector<std::pair<Strings, std::string>> cases = {
        {{"color", kChart, "--cmc", "2:1"}, "qvi: --cmc does not apply to qvi color: it sets the CMC weights, for "
                                            "delta-e\n"},
        {{"cct", kIlluminants, "--illuminant", "D50"},
         "qvi: --illuminant does not apply to qvi cct: it sets the illuminant of colour values, for color, delta-e, "
         "spectrum and measure\n"},
        {{"density", kChart, "--space", "CIEXYZ"}, "qvi: --space does not apply to qvi density: it sets the colour "
                                                   "space, for color and measure\n"},
        {{"delta-e", kChart, kOtherChart, "--paper-white", "19"},
         "qvi: --paper-white does not apply to qvi delta-e: it sets the paper white, for color and density\n"},
        {{"spectrum", "50", "0", "0", "--scale", "100"},
         "qvi: --scale does not apply to qvi spectrum: it sets how reflectance in the input files is read, for "
         "color, delta-e, density and cct\n"},
        {{"conditions", "--decimals", "2"}, "qvi: --decimals does not apply to qvi conditions: it sets the decimals "
                                            "of the numbers, for color, delta-e, density, cct, spectrum and "
                                            "measure\n"}};
    for (const auto& [arguments, expected] : cases) {
        SCOPED_TRACE(arguments[0]);
        const Outcome outcome = Qvi(arguments);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ(expected + "Try `qvi --help`.\n", outcome.err);
    }
}

TEST_F(QviCommandLine, WrongValuesSayWhatIsWrong)
{
    const std::string tryHelp = "Try `qvi --help`.\n";
    const std::vector<std::pair<Strings, std::string>> cases = {
        {{"delta-e", kChart, kOtherChart, "--k00", "1:1"}, "qvi: --k00: \"1:1\" is not KL:KC:KH\n" + tryHelp},
        {{"delta-e", kChart, kOtherChart, "--k00", "0:1:1"},
         "qvi: --k00: \"0:1:1\": each weight must be above 0\n" + tryHelp},
        {{"delta-e", kChart, kOtherChart, "--k00", "1:a:1"}, "qvi: --k00: \"a\" is not a number\n" + tryHelp},
        {{"delta-e", kChart, kOtherChart, "--cmc", "2"}, "qvi: --cmc: \"2\" is not L:C\n" + tryHelp},
        {{"delta-e", kChart, kOtherChart, "--k94", "1,1"}, "qvi: --k94: \"1,1\" is not KL,KC,KH\n" + tryHelp},
        {{"delta-e", kChart, kOtherChart, "--k94", "1,x,1"}, "qvi: --k94: \"x\" is not a number\n" + tryHelp},
        {{"color", kChart, "--output="}, "qvi: --output needs a file name (- for standard output)\n" + tryHelp},
        {{"delta-e", kChart, kOtherChart, "--summary="},
         "qvi: --summary needs a file name (- for standard output)\n" + tryHelp},
        {{"help", "color", "cct"}, "qvi: qvi help takes at most one command; see qvi --help\n" + tryHelp},
        {{"density", kChart, "--tint", "3=50"}, "qvi: --tint needs --solid\n"},
        {{"spectrum", "50", "1e39", "0"},
         "qvi: qvi spectrum: \"1e39\" is out of range: a float holds magnitudes up to 3.4e38\n"},
        {{"spectrum", "50", "x", "0"}, "qvi: qvi spectrum: \"x\" is not a number\n"}};
    for (const auto& [arguments, expected] : cases) {
        SCOPED_TRACE(arguments.back());
        const Outcome outcome = Qvi(arguments);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ(expected, outcome.err);
    }
    const std::string summary = Path("summary.txt");
    const Outcome same = Qvi({"delta-e", kChart, kOtherChart, "--summary", summary, "-o", summary});
    EXPECT_FAILURE(same, 2);
    EXPECT_EQ("qvi: --summary and --output name the same file\n", same.err);
    EXPECT_FALSE(fs::exists(summary));
}

TEST_F(QviCommandLine, AMissingValueNamesItsOption)
{
    const Outcome between = Qvi({"color", kChart, "--space", "--format", "csv"});
    EXPECT_FAILURE(between, 2);
    EXPECT_EQ("qvi: --space needs a value (--format is an option)\nTry `qvi --help`.\n", between.err);
    const Outcome last = Qvi({"color", kChart, "--illuminant"});
    EXPECT_FAILURE(last, 2);
    EXPECT_EQ("qvi: --illuminant needs a value\nTry `qvi --help`.\n", last.err);
    const Outcome shortOption = Qvi({"color", kChart, "--output", "-q"});
    EXPECT_FAILURE(shortOption, 2);
    EXPECT_EQ("qvi: --output needs a value (-q is an option)\nTry `qvi --help`.\n", shortOption.err);
    // A negative number is a value.
    EXPECT_EQ(0, Qvi({"delta-e", kChart, kOtherChart, "--tolerance", "-1"}).status);
}

TEST_F(QviCommandLine, VersionHelpCommandAndEndOfOptions)
{
    const Outcome version = Qvi({"--version"});
    EXPECT_SILENT_SUCCESS(version);
    EXPECT_TRUE(StartsWith(version.out, "qvi " QVI_VERSION " ")) << version.out;
    for (const char* command : {"color", "delta-e", "density", "cct", "spectrum", "conditions"}) {
        const Outcome help = Qvi({"help", command});
        EXPECT_SILENT_SUCCESS(help);
        EXPECT_EQ(Qvi({command, "--help"}).out, help.out);
    }
    EXPECT_EQ(Qvi({"--help"}).out, Qvi({"help"}).out);
    const Outcome unknown = Qvi({"help", "paint"});
    EXPECT_FAILURE(unknown, 2);
    EXPECT_TRUE(Contains(unknown.err, "unknown command \"paint\"")) << unknown;
    // After --, words that look like options are arguments: a file whose
    // name starts with a dash.
    Put("-chart.cgats", ReadFile(SamplePath(kChart)));
    const Outcome dashed = Qvi({"color", "-q", "--", "-chart.cgats"}, dir);
    EXPECT_SILENT_SUCCESS(dashed);
    EXPECT_EQ(Data(Qvi({"color", kChart}).out), Data(dashed.out));
    EXPECT_FAILURE(Qvi({"color", "-chart.cgats"}, dir), 2);
    // Negative Lab values need no --.
    EXPECT_EQ(Qvi({"spectrum", "50", "-20", "-30"}).out, Qvi({"spectrum", "--", "50", "-20", "-30"}).out);
}

TEST_F(QviCommandLine, HelpSaysHowInputIsRead)
{
    const std::string help = Qvi({"--help"}).out;
    EXPECT_TRUE(Contains(help, "--scale auto|1|100              how reflectance in the input is read")) << help;
    EXPECT_TRUE(Contains(help, "is accepted: 380..390 nm and 710..730 nm take the nearest measured\n  value")) << help;
    EXPECT_TRUE(Contains(help, "Lab files (LAB_L, LAB_A, LAB_B and no spectral fields)")) << help;
    EXPECT_TRUE(Contains(Qvi({"delta-e", "--help"}).out, "--k00 KL:KC:KH")) << help;
    EXPECT_TRUE(Contains(Qvi({"delta-e", "--help"}).out, "2000\n                     (CIEDE2000)")) << help;
    // Every help fits a terminal of 80 columns.
    for (const char* command : {"", "color", "delta-e", "density", "cct", "spectrum", "conditions"}) {
        const Strings arguments = *command == '\0' ? Strings{"--help"} : Strings{"help", command};
        for (const std::string& line : Lines(Qvi(arguments).out)) {
            EXPECT_LE(line.size(), 80u) << command << ": " << line;
        }
    }
}

} // namespace

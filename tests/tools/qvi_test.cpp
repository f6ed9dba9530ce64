// qvi, run as a separate process on the bundled samples and on files the
// tests write: exit status, standard output and standard error of every
// command and output form, broken inputs, the reflectance scale, measure
// conditions, the delta-e summary, densities, standard input, and outputs
// pinned byte for byte.

#include "tests/tools/qvi_harness.h"

#include <gtest/gtest.h>

namespace {

using namespace qvi_test;

// ===================================================================== help

using QviHelp = QviTest;

TEST_F(QviHelp, GeneralHelpExitsZero)
{
    for (const char* option : {"--help", "-h"}) {
        const Outcome outcome = Qvi({option});
        EXPECT_SUCCESS(outcome);
        EXPECT_TRUE(StartsWith(outcome.out, "usage: qvi COMMAND")) << outcome;
        for (const char* command : {"color", "delta-e", "density", "cct", "spectrum", "conditions"}) {
            EXPECT_TRUE(Contains(outcome.out, std::string("  ") + command + ' ')) << command;
        }
    }
}

TEST_F(QviHelp, EveryCommandHasHelpThatExitsZero)
{
    for (const char* command : {"color", "delta-e", "density", "cct", "spectrum", "conditions"}) {
        SCOPED_TRACE(command);
        const Outcome outcome = Qvi({command, "--help"});
        EXPECT_SUCCESS(outcome);
        EXPECT_TRUE(StartsWith(outcome.out, std::string("usage: qvi ") + command)) << outcome;
        // The help wins over anything else on the line.
        const Outcome mixed = Qvi({command, "no-such-file.cgats", "-h"});
        EXPECT_SUCCESS(mixed);
        EXPECT_EQ(outcome.out, mixed.out);
    }
}

// A wrong command line prints its usage text on standard error, never on
// standard output.
TEST_F(QviHelp, NoCommandIsAWrongCommandLine)
{
    const Outcome outcome = Qvi({});
    EXPECT_EQ(2, outcome.status) << outcome;
    EXPECT_EQ("", outcome.out) << outcome;
    EXPECT_TRUE(Contains(outcome.err, "usage: qvi")) << outcome;
}

TEST_F(QviHelp, UnknownCommand)
{
    const Outcome outcome = Qvi({"paint", kChart});
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(Contains(outcome.err, "unknown command \"paint\"")) << outcome;
}

TEST_F(QviHelp, UnknownOption)
{
    const Outcome outcome = Qvi({"color", kChart, "--bogus"});
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(StartsWith(outcome.err, "qvi: unknown option --bogus\n")) << outcome;
}

TEST_F(QviHelp, WrongNumberOfArguments)
{
    for (const Strings& arguments :
         {Strings{"color"}, Strings{"color", kChart, kOtherChart}, Strings{"delta-e", kChart}, Strings{"density"},
          Strings{"cct"}, Strings{"spectrum", "50", "0"}, Strings{"conditions", kChart}}) {
        SCOPED_TRACE(arguments.front() + " with " + std::to_string(arguments.size() - 1) + " arguments");
        const Outcome outcome = Qvi(arguments);
        EXPECT_FAILURE(outcome, 2);
    }
}

TEST_F(QviHelp, WrongOptionValues)
{
    for (const Strings& arguments :
         {Strings{"color", kChart, "--format", "xml"}, Strings{"color", kChart, "--decimals", "13"},
          Strings{"color", kChart, "--decimals", "two"}, Strings{"color", kChart, "--scale", "50"},
          Strings{"color", kChart, "--condition", "Colorimetric.Observer"},
          Strings{"color", kChart, "--condition", "=TenDegree"}, Strings{"color", kChart, "--format"},
          Strings{"delta-e", kChart, kOtherChart, "--tolerance", "abc"},
          Strings{"delta-e", kChart, kOtherChart, "--cmc", "2"},
          Strings{"delta-e", kChart, kOtherChart, "--k94", "1,1"}, Strings{"density", kChart, "--tint", "8"},
          Strings{"spectrum", "50", "x", "0"}}) {
        std::string line;
        for (const std::string& word : arguments) {
            line += word + ' ';
        }
        SCOPED_TRACE(line);
        EXPECT_FAILURE(Qvi(arguments), 2);
    }
}

// ================================================================ commands

using QviCommands = QviTest;

TEST_F(QviCommands, ColorOfTheChart)
{
    const Outcome outcome = Qvi({"color", kChart});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ((Strings{"SAMPLE_ID", "SAMPLE_NAME", "LAB_L", "LAB_A", "LAB_B"}), table.fields);
    ASSERT_EQ(24u, table.rows.size());
    EXPECT_EQ("CIELab", table.Keyword("COLOR_SPACE"));
    EXPECT_EQ("D65", table.Keyword("ILLUMINATION"));
    EXPECT_EQ("TwoDegree", table.Keyword("OBSERVER"));
    EXPECT_EQ("Absolute", table.Keyword("WHITE_BASE"));
    EXPECT_EQ("colour values of " + kChart, table.Keyword("DESCRIPTOR"));
    const Table input = Sample(kChart);
    for (std::size_t r = 0; r < 24; ++r) {
        EXPECT_EQ(input.Value(r, "SAMPLE_ID"), table.Value(r, "SAMPLE_ID"));
        EXPECT_EQ(input.Value(r, "SAMPLE_NAME"), table.Value(r, "SAMPLE_NAME"));
    }
    // The white patch is light and neutral, the grey scale gets darker, the
    // black is dark.
    const std::size_t white = table.Row("19");
    EXPECT_GT(table.At(white, "LAB_L"), 90.0);
    EXPECT_LT(std::fabs(table.At(white, "LAB_A")), 2.0);
    EXPECT_LT(std::fabs(table.At(white, "LAB_B")), 3.0);
    for (int id = 20; id <= 24; ++id) {
        const std::size_t grey = table.Row(std::to_string(id));
        EXPECT_LT(table.At(grey, "LAB_L"), table.At(table.Row(std::to_string(id - 1)), "LAB_L")) << id;
        EXPECT_LT(std::fabs(table.At(grey, "LAB_A")), 2.0) << id;
    }
    EXPECT_LT(table.At(table.Row("24"), "LAB_L"), 25.0);
    // Blue has a strongly negative b*, yellow a strongly positive one, red a
    // positive a*, green a negative one.
    EXPECT_LT(table.At(table.Row("13"), "LAB_B"), -30.0);
    EXPECT_GT(table.At(table.Row("16"), "LAB_B"), 60.0);
    EXPECT_GT(table.At(table.Row("15"), "LAB_A"), 40.0);
    EXPECT_LT(table.At(table.Row("14"), "LAB_A"), -25.0);
}

TEST_F(QviCommands, ColorOfFlatReflectance)
{
    Put("flat.cgats", FlatFile({{"1", "0.5"}, {"2", "1"}, {"3", "0.005"}, {"4", "0"}}));
    for (const char* illuminant : {"D65", "D50", "A"}) {
        SCOPED_TRACE(illuminant);
        const Outcome outcome = Qvi({"color", "flat.cgats", "--illuminant", illuminant, "--decimals", "6"}, dir);
        EXPECT_SUCCESS(outcome);
        const Table table = ParseCgats(outcome.out);
        ASSERT_EQ(4u, table.rows.size());
        // A flat reflectance is neutral under every illuminant; its L* follows
        // from Y = the reflectance.
        const double expected[] = {Lightness(0.5), 100.0, Lightness(0.005), 0.0};
        for (std::size_t r = 0; r < 4; ++r) {
            EXPECT_NEAR(expected[r], table.At(r, "LAB_L"), 0.01) << r;
            EXPECT_NEAR(0.0, table.At(r, "LAB_A"), 0.01) << r;
            EXPECT_NEAR(0.0, table.At(r, "LAB_B"), 0.01) << r;
        }
    }
}

TEST_F(QviCommands, XyzOfFlatReflectanceIsTheWhitePointTimesTheReflectance)
{
    Put("flat.cgats", FlatFile({{"1", "1"}, {"2", "0.5"}}));
    struct White {
        const char* illuminant;
        const char* observer;
        double x;
        double z;
    };
    // Tristimulus values of the illuminants' white points, Y = 100.
    for (const White& white : {White{"D65", "2", 95.047, 108.883}, White{"D50", "2", 96.422, 82.521},
                               White{"D65", "10", 94.811, 107.304}, White{"A", "2", 109.850, 35.585}}) {
        SCOPED_TRACE(std::string(white.illuminant) + " " + white.observer);
        const Outcome outcome = Qvi({"color", "flat.cgats", "--space", "CIEXYZ", "--illuminant", white.illuminant,
                                     "--observer", white.observer, "--decimals", "5"},
                                    dir);
        EXPECT_SUCCESS(outcome);
        const Table table = ParseCgats(outcome.out);
        EXPECT_EQ((Strings{"SAMPLE_ID", "XYZ_X", "XYZ_Y", "XYZ_Z"}), table.fields);
        ASSERT_EQ(2u, table.rows.size());
        for (std::size_t r = 0; r < 2; ++r) {
            const double factor = r == 0 ? 1.0 : 0.5;
            EXPECT_NEAR(white.x * factor, table.At(r, "XYZ_X"), 0.05);
            EXPECT_NEAR(100.0 * factor, table.At(r, "XYZ_Y"), 0.01);
            EXPECT_NEAR(white.z * factor, table.At(r, "XYZ_Z"), 0.05);
        }
    }
}

TEST_F(QviCommands, ColorSpacesAgreeWithEachOther)
{
    const Table lab = ParseCgats(Qvi({"color", kOtherChart, "--decimals", "6"}).out);
    const Table lch = ParseCgats(Qvi({"color", kOtherChart, "--space", "CIELCh", "--decimals", "6"}).out);
    const Table xyz = ParseCgats(Qvi({"color", kOtherChart, "--space", "CIEXYZ", "--decimals", "6"}).out);
    const Table xyy = ParseCgats(Qvi({"color", kOtherChart, "--space", "CIExyY", "--decimals", "6"}).out);
    EXPECT_EQ((Strings{"SAMPLE_ID", "SAMPLE_NAME", "LAB_L", "LAB_C", "LAB_H"}), lch.fields);
    EXPECT_EQ((Strings{"SAMPLE_ID", "SAMPLE_NAME", "XYY_X", "XYY_Y", "XYY_CAPY"}), xyy.fields);
    ASSERT_EQ(24u, lch.rows.size());
    ASSERT_EQ(24u, xyy.rows.size());
    const double pi = std::acos(-1.0);
    for (std::size_t r = 0; r < 24; ++r) {
        const double a = lab.At(r, "LAB_A");
        const double b = lab.At(r, "LAB_B");
        EXPECT_NEAR(lab.At(r, "LAB_L"), lch.At(r, "LAB_L"), 1e-4);
        EXPECT_NEAR(std::hypot(a, b), lch.At(r, "LAB_C"), 1e-3) << r;
        if (std::hypot(a, b) > 1.0) {
            double hue = std::atan2(b, a) * 180.0 / pi;
            hue += hue < 0.0 ? 360.0 : 0.0;
            EXPECT_NEAR(hue, lch.At(r, "LAB_H"), 0.01) << r;
        }
        const double sum = xyz.At(r, "XYZ_X") + xyz.At(r, "XYZ_Y") + xyz.At(r, "XYZ_Z");
        EXPECT_NEAR(xyz.At(r, "XYZ_X") / sum, xyy.At(r, "XYY_X"), 1e-5) << r;
        EXPECT_NEAR(xyz.At(r, "XYZ_Y") / sum, xyy.At(r, "XYY_Y"), 1e-5) << r;
        EXPECT_NEAR(xyz.At(r, "XYZ_Y"), xyy.At(r, "XYY_CAPY"), 1e-3) << r;
        EXPECT_NEAR(Lightness(xyz.At(r, "XYZ_Y") / 100.0), lab.At(r, "LAB_L"), 1e-3) << r;
    }
}

TEST_F(QviCommands, DecimalsOption)
{
    const Table table = ParseCgats(Qvi({"color", kOtherChart, "--decimals", "2"}).out);
    const Table fine = ParseCgats(Qvi({"color", kOtherChart, "--decimals", "7"}).out);
    ASSERT_EQ(24u, table.rows.size());
    for (std::size_t r = 0; r < 24; ++r) {
        const std::string& value = table.Value(r, "LAB_L");
        ASSERT_NE(std::string::npos, value.find('.'));
        EXPECT_EQ(2u, value.size() - value.find('.') - 1) << value;
        EXPECT_EQ(7u, fine.Value(r, "LAB_B").size() - fine.Value(r, "LAB_B").find('.') - 1);
        EXPECT_NEAR(fine.At(r, "LAB_L"), table.At(r, "LAB_L"), 0.005 + 1e-9);
    }
    const Table whole = ParseCgats(Qvi({"color", kOtherChart, "--decimals", "0"}).out);
    EXPECT_EQ(std::string::npos, whole.Value(0, "LAB_L").find('.'));
}

TEST_F(QviCommands, ColorOfEverySampleFile)
{
    for (const auto& entry : fs::directory_iterator(kSamples)) {
        if (entry.path().extension() != ".cgats") {
            continue;
        }
        const std::string file = entry.path().filename().string();
        SCOPED_TRACE(file);
        const Outcome outcome = Qvi({"color", file});
        EXPECT_SUCCESS(outcome);
        const Table table = ParseCgats(outcome.out);
        const Table input = Sample(file);
        EXPECT_EQ(input.Keyword("NUMBER_OF_SETS"), std::to_string(table.rows.size()));
        if (input.HasKeyword("MEAS_TYPE") && input.Keyword("MEAS_TYPE") == "EMISSION") {
            EXPECT_EQ("Emission", table.Keyword("ILLUMINATION"));
            continue;
        }
        for (double l : table.Column("LAB_L")) {
            EXPECT_GE(l, 0.0);
            EXPECT_LE(l, 100.0);
        }
    }
}

TEST_F(QviCommands, CorrelatedColourTemperatureOfTheIlluminants)
{
    const Outcome outcome = Qvi({"cct", kIlluminants});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ((Strings{"SAMPLE_ID", "SAMPLE_NAME", "CCT"}), table.fields);
    EXPECT_EQ("TwoDegree", table.Keyword("OBSERVER"));
    // The illuminants' published temperatures; A is defined by its 2856 K.
    const std::map<std::string, double> kelvin = {{"A", 2856.0},  {"C", 6774.0},  {"D50", 5003.0},
                                                  {"D55", 5503.0}, {"D65", 6504.0}, {"D75", 7504.0}};
    ASSERT_EQ(kelvin.size(), table.rows.size());
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        const std::string name = table.Value(r, "SAMPLE_NAME");
        ASSERT_EQ(1u, kelvin.count(name)) << name;
        EXPECT_NEAR(kelvin.at(name), table.At(r, "CCT"), name == "A" ? 3.0 : 10.0) << name;
        // One decimal.
        EXPECT_EQ(1u, table.Value(r, "CCT").size() - table.Value(r, "CCT").find('.') - 1);
    }
}

TEST_F(QviCommands, CorrelatedColourTemperatureOfEqualEnergy)
{
    std::string text = FlatFile({{"1", "1"}, {"2", "100"}});
    text.replace(text.find("ORIGINATOR"), 0, "KEYWORD \"MEAS_TYPE\"\nMEAS_TYPE \"EMISSION\"\n");
    Put("equal.cgats", text);
    const Outcome outcome = Qvi({"cct", "equal.cgats"}, dir);
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ((Strings{"SAMPLE_ID", "CCT"}), table.fields);
    ASSERT_EQ(2u, table.rows.size());
    // The equal-energy spectrum lies at about 5455 K, whatever its level.
    EXPECT_NEAR(5455.0, table.At(0, "CCT"), 5.0);
    EXPECT_EQ(table.Value(0, "CCT"), table.Value(1, "CCT"));
}

// An emission file keeps its own scale and says none; read on a scale that
// is given, it says that one. A value beyond a float names no empty scale.
TEST_F(QviCommands, EmissionFileScale)
{
    std::string text = FlatFile({{"1", "50"}});
    text.replace(text.find("ORIGINATOR"), 0, "KEYWORD \"MEAS_TYPE\"\nMEAS_TYPE \"EMISSION\"\n");
    Put("light.cgats", text);
    Outcome outcome = Qvi({"cct", "light.cgats"}, dir);
    EXPECT_SUCCESS(outcome);
    EXPECT_FALSE(ParseCgats(outcome.out).HasKeyword("REFLECTANCE_SCALE"));
    outcome = Qvi({"cct", "light.cgats", "--scale", "100"}, dir);
    EXPECT_SUCCESS(outcome);
    EXPECT_EQ("0..100", ParseCgats(outcome.out).Keyword("REFLECTANCE_SCALE"));

    text = FlatFile({{"1", "1e39"}});
    text.replace(text.find("ORIGINATOR"), 0, "KEYWORD \"MEAS_TYPE\"\nMEAS_TYPE \"EMISSION\"\n");
    Put("light.cgats", text);
    outcome = Qvi({"cct", "light.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: light.cgats:9: the value \"1e39\" of SPECTRAL_NM380 is out of range: it is beyond a float "
              "(3.4e38)\n",
              BeyondNotes(outcome.err));
}

TEST_F(QviCommands, SpectrumForALabValue)
{
    const Outcome outcome = Qvi({"spectrum", "50", "10", "-20"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    ASSERT_EQ(1u, table.rows.size());
    ASSERT_EQ(39u, table.fields.size());
    EXPECT_EQ((Strings{"LAB_L", "LAB_A", "LAB_B"}), Strings(table.fields.begin(), table.fields.begin() + 3));
    for (int band = 0; band < 36; ++band) {
        const std::string field = table.fields[static_cast<std::size_t>(3 + band)];
        EXPECT_EQ(380 + 10 * band, Cgats::SpectralWavelength(field)) << field;
        EXPECT_GE(table.At(0, field), 0.0) << field;
        EXPECT_LE(table.At(0, field), 1.0) << field;
    }
    const double dl = table.At(0, "LAB_L") - 50.0;
    const double da = table.At(0, "LAB_A") - 10.0;
    const double db = table.At(0, "LAB_B") + 20.0;
    const double reached = std::sqrt(dl * dl + da * da + db * db);
    EXPECT_LT(reached, 0.1);
    EXPECT_NEAR(reached, Number(table.Keyword("DELTA_E")), 2e-4);
    EXPECT_EQ("success", table.Keyword("RESULT"));
    EXPECT_EQ("D65", table.Keyword("ILLUMINATION"));

    // The spectrum, read back by qvi color from standard input, has that Lab.
    const std::string spectrum = Put("spectrum.cgats", outcome.out);
    const Outcome back = Qvi({"color", "-", "--decimals", "6"}, dir, spectrum);
    EXPECT_SUCCESS(back);
    const Table lab = ParseCgats(back.out);
    ASSERT_EQ(1u, lab.rows.size());
    EXPECT_EQ("1", lab.Value(0, "SAMPLE_ID"));
    for (const char* axis : {"LAB_L", "LAB_A", "LAB_B"}) {
        EXPECT_NEAR(table.At(0, axis), lab.At(0, axis), 2e-3) << axis;
    }
}

TEST_F(QviCommands, SpectrumUnderAnotherIlluminant)
{
    const Outcome outcome = Qvi({"spectrum", "70", "-20", "30", "--illuminant", "D50"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ("D50", table.Keyword("ILLUMINATION"));
    EXPECT_NEAR(70.0, table.At(0, "LAB_L"), 0.1);
    EXPECT_NEAR(-20.0, table.At(0, "LAB_A"), 0.1);
    EXPECT_NEAR(30.0, table.At(0, "LAB_B"), 0.1);
    const std::string spectrum = Put("spectrum.cgats", outcome.out);
    const Table lab = ParseCgats(Qvi({"color", spectrum, "--illuminant", "D50", "--decimals", "6"}).out);
    EXPECT_NEAR(table.At(0, "LAB_A"), lab.At(0, "LAB_A"), 2e-3);
}

// The conditions as qvi uses them: its defaults (those of the commands where
// they differ from the library's), and only values that qvi accepts, the
// parametrised ones as they are written.
TEST_F(QviCommands, ConditionsListsEveryKey)
{
    const Outcome outcome = Qvi({"conditions"});
    EXPECT_SILENT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ((Strings{"KEY", "DEFAULT", "SUPPORTED_VALUES"}), table.fields);
    std::map<std::string, std::pair<std::string, std::string>> keys;
    for (const Strings& row : table.rows) {
        keys[row[0]] = {row[1], row[2]};
    }
    EXPECT_EQ(12u, keys.size());
    for (const char* key : {"Colorimetric.Illumination", "Colorimetric.Observer", "Colorimetric.WhiteBase",
                            "Colorimetric.DensityStandard", "Colorimetric.DensityFilterMode",
                            "ColorSpaceDescription.Type", "ColorSpaceDescription.DeltaEFormula"}) {
        ASSERT_EQ(1u, keys.count(key)) << key;
        // The default (before any remark in brackets) is one of the values.
        const std::string& values = keys[key].second;
        const std::string value = keys[key].first.substr(0, keys[key].first.find(" ("));
        EXPECT_TRUE(Contains("; " + values + ";", "; " + value + ";")) << key << ": " << values;
    }
    EXPECT_EQ("D65 (cct: Emission)", keys["Colorimetric.Illumination"].first);
    EXPECT_EQ("A; B; C; D50; D55; D65; D75; F1 ... F12 (e.g. F7); Dxx, Temperature:K (K from 4000 to 25000, e.g. "
              "Dxx, Temperature:5000); Emission",
              keys["Colorimetric.Illumination"].second);
    EXPECT_EQ("TwoDegree", keys["Colorimetric.Observer"].first);
    EXPECT_EQ("TwoDegree; TenDegree", keys["Colorimetric.Observer"].second);
    EXPECT_EQ("Absolute (color with --paper-white: Paper; density: Automatic)", keys["Colorimetric.WhiteBase"].first);
    EXPECT_EQ("CIELab", keys["ColorSpaceDescription.Type"].first);
    EXPECT_FALSE(Contains(keys["ColorSpaceDescription.Type"].second, "CMYK"));
    EXPECT_EQ("CIELab", keys["ColorSpaceDescription.DeltaEFormula"].first);
    EXPECT_EQ("CIELab; CIELuv; LABvq; FMCII; CMC; 94; 2000 (CIEDE2000)",
              keys["ColorSpaceDescription.DeltaEFormula"].second);
    EXPECT_EQ("DIN", keys["Colorimetric.DensityStandard"].first);
    EXPECT_EQ("Auto", keys["Colorimetric.DensityFilterMode"].first);
    EXPECT_TRUE(Contains(keys["ColorSpaceDescription.Type"].second, "CIEXYZ"));
}

// Every value that `qvi conditions` lists works where its key applies, and
// the help of color names the same white-base default.
TEST_F(QviCommands, EveryListedValueIsAccepted)
{
    const Table table = ParseCgats(Qvi({"conditions"}).out);
    std::map<std::string, std::string> values;
    for (const Strings& row : table.rows) {
        values[row[0]] = row[2];
    }
    const auto run = [&](const Strings& arguments) {
        SCOPED_TRACE(arguments.back());
        EXPECT_EQ(0, Qvi(arguments).status) << Qvi(arguments);
    };
    for (std::string illuminant : {"A", "B", "C", "D50", "D55", "D65", "D75", "Emission"}) {
        EXPECT_TRUE(Contains(values["Colorimetric.Illumination"], illuminant));
        run({"color", kChart, "--illuminant", illuminant});
    }
    for (int number = 1; number <= 12; ++number) {
        run({"color", kChart, "--illuminant", "F" + std::to_string(number)});
    }
    run({"color", kChart, "--illuminant", "Dxx, Temperature:5000"});
    std::string spaces = values["ColorSpaceDescription.Type"] + ";";
    for (std::size_t at = 0; at < spaces.size();) {
        const std::size_t end = spaces.find(';', at);
        run({"color", kChart, "--space", spaces.substr(at, end - at)});
        at = end + 2;
    }
    for (const char* formula : {"CIELab", "CIELuv", "LABvq", "FMCII", "CMC", "94", "2000"}) {
        run({"delta-e", kChart, kOtherChart, "--formula", formula});
    }
    for (const char* standard : {"DIN", "DINNB", "ANSIA", "ANSIT", "SPI", "User"}) {
        run({"density", kChart, "--paper-white", "19", "--density-standard", standard});
    }
    for (const char* base : {"Absolute", "Paper", "Automatic"}) {
        run({"color", kChart, "--paper-white", "19", "--white-base", base});
    }
    EXPECT_TRUE(Contains(Qvi({"color", "--help"}).out, "Absolute (default), Paper (default with --paper-white)"));
    EXPECT_TRUE(Contains(Qvi({"density", "--help"}).out, "Automatic (default; needs --paper-white)"));
}

// ================================================================= formats

using QviFormats = QviTest;

TEST_F(QviFormats, CgatsIsTheDefaultAndReadsBack)
{
    const Outcome outcome = Qvi({"color", kOtherChart});
    EXPECT_SUCCESS(outcome);
    EXPECT_EQ(outcome.out, Qvi({"color", kOtherChart, "--format", "cgats"}).out);
    EXPECT_EQ(outcome.out, Qvi({"color", kOtherChart, "--format=cgats"}).out);
    EXPECT_TRUE(StartsWith(outcome.out, "CGATS.17\n"));
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ(24u, table.rows.size());
}

TEST_F(QviFormats, CsvHoldsTheSameValues)
{
    const Table cgats = ParseCgats(Qvi({"color", kOtherChart}).out);
    const Outcome outcome = Qvi({"color", kOtherChart, "--format", "csv"});
    EXPECT_SUCCESS(outcome);
    const Csv csv = ParseCsv(outcome.out);
    ASSERT_EQ(cgats.rows.size() + 1, csv.lines.size());
    EXPECT_EQ(cgats.fields, csv.lines[0]);
    for (std::size_t r = 0; r < cgats.rows.size(); ++r) {
        EXPECT_EQ(cgats.rows[r], csv.lines[r + 1]) << r;
    }
    EXPECT_TRUE(csv.summary.empty());
}

TEST_F(QviFormats, CsvQuotesFieldsWithCommasAndBlanks)
{
    std::string text = FlatFile({{"1", "0.5"}, {"2", "0.25"}});
    text.replace(text.find("SAMPLE_ID"), 9, "SAMPLE_ID SAMPLE_NAME");
    text.replace(text.find("\n1 "), 3, "\n1 \"grey, light\" ");
    text.replace(text.find("\n2 "), 3, "\n2 \" padded \" ");
    Put("names.cgats", text);
    const Outcome outcome = Qvi({"color", "names.cgats", "--format", "csv"}, dir);
    EXPECT_SUCCESS(outcome);
    const Csv csv = ParseCsv(outcome.out);
    ASSERT_EQ(3u, csv.lines.size());
    ASSERT_EQ(5u, csv.lines[1].size());
    EXPECT_EQ("grey, light", csv.lines[1][1]);
    EXPECT_EQ(" padded ", csv.lines[2][1]);
}

TEST_F(QviFormats, JsonHoldsTheSameValues)
{
    const Table cgats = ParseCgats(Qvi({"color", kOtherChart}).out);
    const Outcome outcome = Qvi({"color", kOtherChart, "--format", "json"});
    EXPECT_SUCCESS(outcome);
    const Json json = ParseJson(outcome.out);
    ASSERT_EQ(Json::Kind::Object, json.kind);
    const Json& header = json["header"];
    ASSERT_EQ(Json::Kind::Object, header.kind);
    for (const char* key : {"ORIGINATOR", "DESCRIPTOR", "COLOR_SPACE", "ILLUMINATION", "OBSERVER", "WHITE_BASE"}) {
        ASSERT_TRUE(header.Has(key)) << key;
        EXPECT_EQ(Json::Kind::String, header[key].kind) << key;
        EXPECT_EQ(cgats.Keyword(key), header[key].text) << key;
    }
    const Json& rows = json["rows"];
    ASSERT_EQ(Json::Kind::Array, rows.kind);
    ASSERT_EQ(cgats.rows.size(), rows.items.size());
    for (std::size_t r = 0; r < rows.items.size(); ++r) {
        const Json& row = rows.items[r];
        ASSERT_EQ(Json::Kind::Object, row.kind);
        ASSERT_EQ(cgats.fields.size(), row.members.size());
        for (std::size_t f = 0; f < cgats.fields.size(); ++f) {
            EXPECT_EQ(cgats.fields[f], row.members[f].first);
            const bool text = cgats.fields[f] == "SAMPLE_ID" || cgats.fields[f] == "SAMPLE_NAME";
            EXPECT_EQ(text ? Json::Kind::String : Json::Kind::Number, row.members[f].second.kind) << cgats.fields[f];
            EXPECT_EQ(cgats.rows[r][f], row.members[f].second.text);
        }
    }
    EXPECT_FALSE(json.Has("summary"));
}

TEST_F(QviFormats, TableHoldsTheSameValuesAligned)
{
    const Table cgats = ParseCgats(Qvi({"color", kOtherChart}).out);
    const Outcome outcome = Qvi({"color", kOtherChart, "--format", "table"});
    EXPECT_SUCCESS(outcome);
    const Strings lines = Lines(outcome.out);
    ASSERT_EQ(cgats.rows.size() + 1, lines.size());
    EXPECT_EQ(cgats.fields, Cells(lines[0]));
    // Numbers are aligned on the right edge of their heading, text on the left.
    const std::size_t labEnd = lines[0].find("LAB_L") + 5;
    const std::size_t nameStart = lines[0].find("SAMPLE_NAME");
    for (std::size_t r = 0; r < cgats.rows.size(); ++r) {
        EXPECT_EQ(cgats.rows[r], Cells(lines[r + 1])) << lines[r + 1];
        const std::string& l = cgats.rows[r][cgats.Field("LAB_L")];
        EXPECT_EQ(l, lines[r + 1].substr(labEnd - l.size(), l.size())) << lines[r + 1];
        EXPECT_EQ(cgats.rows[r][1], lines[r + 1].substr(nameStart, cgats.rows[r][1].size()));
        EXPECT_NE(' ', lines[r + 1].back());
    }
}

TEST_F(QviFormats, EveryCommandInEveryFormat)
{
    Put("flat.cgats", FlatFile({{"1", "0.8"}, {"2", "0.4"}, {"3", "0.1"}}));
    const std::vector<std::pair<std::string, Strings>> runs = {
        {"color", {"color", SamplePath(kOtherChart)}},
        {"delta-e", {"delta-e", SamplePath(kChart), SamplePath(kOtherChart)}},
        {"density", {"density", "flat.cgats", "--paper-white", "1", "--solid", "3", "--tint", "2=50"}},
        {"cct", {"cct", SamplePath(kIlluminants)}},
        {"spectrum", {"spectrum", "60", "5", "5"}},
        {"conditions", {"conditions"}}};
    for (const auto& [name, arguments] : runs) {
        SCOPED_TRACE(name);
        const Outcome cgatsRun = Qvi(arguments, dir);
        EXPECT_SUCCESS(cgatsRun);
        const Table cgats = ParseCgats(cgatsRun.out);
        ASSERT_FALSE(cgats.rows.empty());
        for (const char* format : {"csv", "json", "table"}) {
            SCOPED_TRACE(format);
            Strings withFormat = arguments;
            withFormat.insert(withFormat.end(), {"--format", format});
            const Outcome outcome = Qvi(withFormat, dir);
            EXPECT_EQ(0, outcome.status) << outcome;
            if (std::string(format) == "csv") {
                // The table only; a summary goes to standard error.
                EXPECT_EQ("", BeyondSummary(BeyondNotes(outcome.err))) << outcome;
                const Csv csv = ParseCsv(outcome.out);
                EXPECT_TRUE(csv.summary.empty());
                ASSERT_EQ(cgats.rows.size() + 1, csv.lines.size());
                EXPECT_EQ(cgats.fields, csv.lines[0]);
                for (std::size_t r = 0; r < cgats.rows.size(); ++r) {
                    EXPECT_EQ(cgats.rows[r], csv.lines[r + 1]);
                }
            } else if (std::string(format) == "json") {
                Json json;
                try {
                    json = ParseJson(outcome.out);
                } catch (const std::exception& error) {
                    ADD_FAILURE() << error.what() << "\n" << outcome.out;
                    continue;
                }
                EXPECT_EQ("", BeyondNotes(outcome.err)) << outcome;
                ASSERT_EQ(cgats.rows.size(), json["rows"].items.size());
                for (std::size_t r = 0; r < cgats.rows.size(); ++r) {
                    const Json& row = json["rows"].items[r];
                    ASSERT_EQ(cgats.fields.size(), row.members.size());
                    for (std::size_t f = 0; f < cgats.fields.size(); ++f) {
                        EXPECT_EQ(cgats.fields[f], row.members[f].first);
                        // A missing number is null.
                        if (row.members[f].second.kind == Json::Kind::Null) {
                            EXPECT_EQ("", cgats.rows[r][f]);
                        } else {
                            EXPECT_EQ(cgats.rows[r][f], row.members[f].second.text);
                        }
                    }
                }
            } else {
                EXPECT_EQ("", BeyondNotes(outcome.err)) << outcome;
                const Strings lines = Lines(outcome.out);
                ASSERT_GE(lines.size(), cgats.rows.size() + 1);
                EXPECT_EQ(cgats.fields, Cells(lines[0]));
                for (std::size_t r = 0; r < cgats.rows.size(); ++r) {
                    Strings expected = cgats.rows[r];
                    // A missing number is shown as "-".
                    for (std::string& value : expected) {
                        value = value.empty() ? "-" : value;
                    }
                    EXPECT_EQ(expected, Cells(lines[r + 1]));
                }
                // Only a summary follows, after a blank line.
                if (lines.size() > cgats.rows.size() + 1) {
                    EXPECT_EQ("", lines[cgats.rows.size() + 1]);
                }
            }
        }
    }
}

// ============================================================ broken input

using QviBrokenInput = QviTest;

TEST_F(QviBrokenInput, MissingGridWavelength)
{
    const std::string clean = Rewrite(Sample(kOtherChart), Layout{});
    std::string text = clean;
    const std::size_t at = text.find("SPECTRAL_NM550");
    ASSERT_NE(std::string::npos, at);
    text.replace(at, 14, "SPECTRAL_NM555");
    Put("gap.cgats", text);
    const Outcome outcome = Qvi({"color", "gap.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    const std::size_t line = LineNumber(text, "END_DATA_FORMAT");
    EXPECT_TRUE(StartsWith(outcome.err, "qvi: gap.cgats:" + std::to_string(line) + ": no spectral field for 550 nm"))
        << outcome;
}

TEST_F(QviBrokenInput, TwoFieldsForOneWavelength)
{
    std::string text = Rewrite(Sample(kOtherChart), Layout{});
    text.replace(text.find("SPECTRAL_NM390"), 14, "SPECTRAL_NM_380");
    Put("twice.cgats", text);
    const Outcome outcome = Qvi({"color", "twice.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: twice.cgats:" + std::to_string(LineNumber(text, "END_DATA_FORMAT")) +
                  ": two fields for 380 nm: SPECTRAL_NM380 and SPECTRAL_NM_380\n",
              outcome.err);
}

TEST_F(QviBrokenInput, RowWithTooFewValues)
{
    const std::string clean = Rewrite(Sample(kOtherChart), Layout{});
    const std::size_t line = LineNumber(clean, "BEGIN_DATA") + 5;
    std::string row = Lines(clean).at(line - 1);
    row = row.substr(0, row.rfind('\t'));
    Put("short.cgats", ReplaceLine(clean, line, row));
    const Outcome outcome = Qvi({"color", "short.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: short.cgats:" + std::to_string(line) + ": the row has 37 values for 38 fields\n", outcome.err);
}

TEST_F(QviBrokenInput, RowWithTooManyValues)
{
    const std::string clean = Rewrite(Sample(kOtherChart), Layout{});
    const std::size_t line = LineNumber(clean, "END_DATA") - 1;
    Put("long.cgats", ReplaceLine(clean, line, Lines(clean).at(line - 1) + "\t0.5"));
    const Outcome outcome = Qvi({"density", "long.cgats", "--paper-white", "19"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: long.cgats:" + std::to_string(line) + ": the row has 39 values for 38 fields\n", outcome.err);
}

TEST_F(QviBrokenInput, NotCgats)
{
    Put("letter.txt", "Dear colleague, the measurements follow next week.\nKind regards\n");
    const Outcome outcome = Qvi({"color", "letter.txt"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(StartsWith(outcome.err, "qvi: letter.txt:1: not a CGATS file")) << outcome;
}

TEST_F(QviBrokenInput, EmptyFile)
{
    Put("empty.cgats", "");
    const Outcome outcome = Qvi({"color", "empty.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(StartsWith(outcome.err, "qvi: empty.cgats: not a CGATS file")) << outcome;
}

TEST_F(QviBrokenInput, NonexistentFile)
{
    for (const char* command : {"color", "density", "cct"}) {
        const Outcome outcome = Qvi({command, "absent.cgats"}, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ("qvi: absent.cgats: cannot open the file: No such file or directory\n", outcome.err);
    }
    const Outcome outcome = Qvi({"delta-e", SamplePath(kChart), "absent.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: absent.cgats: cannot open the file: No such file or directory\n", outcome.err);
}

TEST_F(QviBrokenInput, ValueThatIsNoNumber)
{
    const std::string clean = Rewrite(Sample(kOtherChart), Layout{});
    const std::size_t line = LineNumber(clean, "BEGIN_DATA") + 3;
    Strings cells;
    std::string row = Lines(clean).at(line - 1);
    // The 14th field is SPECTRAL_NM500.
    std::size_t start = 0;
    for (int i = 0; i < 14; ++i) {
        start = row.find('\t', start) + 1;
    }
    const std::size_t stop = row.find('\t', start);
    for (const char* bad : {"abc", "0.5x", "inf", "nan", "1.2.3"}) {
        SCOPED_TRACE(bad);
        std::string broken = row;
        broken.replace(start, stop - start, bad);
        Put("word.cgats", ReplaceLine(clean, line, broken));
        const Outcome outcome = Qvi({"color", "word.cgats"}, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_TRUE(StartsWith(outcome.err, "qvi: word.cgats:" + std::to_string(line) + ": ")) << outcome;
        EXPECT_TRUE(Contains(outcome.err, "SPECTRAL_NM500")) << outcome;
        EXPECT_TRUE(Contains(outcome.err, std::string("\"") + bad + "\"")) << outcome;
    }
}

// Reference samples are found by their SAMPLE_ID, so a reference file must
// not hold an id twice.
TEST_F(QviBrokenInput, DuplicateSampleIdInAReferenceFile)
{
    const std::string clean = Rewrite(Sample(kOtherChart), Layout{});
    const std::size_t line = LineNumber(clean, "BEGIN_DATA") + 2;
    std::string row = Lines(clean).at(line - 1);
    ASSERT_EQ("2\t", row.substr(0, 2));
    row.replace(0, 1, "1");
    Put("twice.cgats", ReplaceLine(clean, line, row));
    const Outcome outcome = Qvi({"delta-e", "twice.cgats", SamplePath(kChart)}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(StartsWith(outcome.err, "qvi: twice.cgats:" + std::to_string(line) + ": ")) << outcome;
    EXPECT_TRUE(Contains(outcome.err, "SAMPLE_ID 1")) << outcome;
}

TEST_F(QviBrokenInput, NoSamples)
{
    Put("none.cgats", FlatFile({}));
    const Outcome outcome = Qvi({"color", "none.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(StartsWith(outcome.err, "qvi: none.cgats:")) << outcome;
}

// A file is checked to its end before anything is written: a broken last
// row of a long file leaves standard output empty.
TEST_F(QviBrokenInput, BrokenLastRowOfALongFile)
{
    const std::string clean = Rewrite(Sample(kChips), Layout{});
    const std::size_t line = LineNumber(clean, "END_DATA") - 1;
    Put(kChips, ReplaceLine(clean, line, "1269\t\"broken\"\t0.5"));
    const Outcome outcome = Qvi({"color", kChips}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: " + kChips + ":" + std::to_string(line) + ": the row has 3 values for 38 fields\n", outcome.err);
}

TEST_F(QviBrokenInput, BrokenReferenceOfDeltaE)
{
    Put("letter.txt", "Dear colleague, the reference follows.\n");
    const Outcome outcome = Qvi({"delta-e", "letter.txt", SamplePath(kOtherChart)}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(StartsWith(outcome.err, "qvi: letter.txt:1: not a CGATS file")) << outcome;
}

// ======================================================== input variants

struct Variant {
    const char* name;
    Layout layout;
};

void PrintTo(const Variant& variant, std::ostream* stream)
{
    *stream << variant.name;
}

class QviInputVariants : public QviTest, public testing::WithParamInterface<Variant> {};

// The same measurements written another way give the same output, byte for
// byte: line ends, decimal commas, the spelling of the spectral fields, bands
// beyond the grid, the order of the fields, blanks instead of tabs.
TEST_P(QviInputVariants, GiveTheSameOutputAsTheCleanFile)
{
    const std::string text = Rewrite(Sample(kChart), GetParam().layout);
    Put(kChart, text);
    for (const Strings& arguments :
         {Strings{"color", kChart}, Strings{"color", kChart, "--illuminant", "D50", "--decimals", "6"},
          Strings{"density", kChart, "--paper-white", "19"}}) {
        SCOPED_TRACE(arguments[0]);
        const Outcome original = Qvi(arguments, kSamples);
        const Outcome variant = Qvi(arguments, dir);
        EXPECT_SUCCESS(variant);
        EXPECT_EQ(original.out, variant.out);
    }
}

INSTANTIATE_TEST_SUITE_P(
    QviLayouts, QviInputVariants,
    testing::Values(Variant{"Rewritten", Layout{}},
                    Variant{"Crlf", Layout{"\r\n", "\t", false, "SPECTRAL_NM", false, false, false}},
                    Variant{"DecimalComma", Layout{"\n", "\t", true, "SPECTRAL_NM", false, false, false}},
                    Variant{"UnderscoreSpelling", Layout{"\n", "\t", false, "SPECTRAL_NM_", false, false, false}},
                    Variant{"ShortSpelling", Layout{"\n", "\t", false, "SPECTRAL_", false, false, false}},
                    Variant{"LowerCaseSpelling", Layout{"\n", "\t", false, "nm", false, false, false}},
                    Variant{"ExtraBands", Layout{"\n", "\t", false, "SPECTRAL_NM", true, false, false}},
                    Variant{"OtherOrder", Layout{"\n", "\t", false, "SPECTRAL_NM", false, true, false}},
                    Variant{"Blanks", Layout{"\n", "   ", false, "SPECTRAL_NM", false, false, false}},
                    Variant{"AllAtOnce", Layout{"\r\n", " ", true, "SPECTRAL_NM_", true, true, false}}),
    [](const testing::TestParamInfo<Variant>& info) { return std::string(info.param.name); });

// ================================================================== scale

using QviScale = QviTest;

// The same file with every value written as percent gives the same output.
TEST_F(QviScale, AutomaticScaleDetectsPercent)
{
    for (const std::string& file : {kChart, std::string("it8_7-1_faust_E131102_ektachrome.cgats")}) {
        SCOPED_TRACE(file);
        Layout layout;
        layout.percent = true;
        const std::string text = Rewrite(Sample(file), layout);
        if (file == kChart) {
            ASSERT_TRUE(Contains(text, "\t5.475\t"));
        }
        Put(file, text);
        // Each run on the original against its counterpart on the copy.
        const std::vector<std::pair<Strings, Strings>> runs = {
            {{"color", file}, {"color", file}},
            {{"color", file}, {"color", file, "--scale", "100"}},
            {{"color", file, "--scale", "1"}, {"color", file, "--scale", "auto"}},
            {{"color", file, "--space", "CIEXYZ", "--decimals", "6"},
             {"color", file, "--space", "CIEXYZ", "--decimals", "6"}},
            {{"density", file, "--white-base", "Absolute"}, {"density", file, "--white-base", "Absolute"}}};
        for (const auto& [original, copy] : runs) {
            SCOPED_TRACE(copy.back());
            const Outcome percent = Qvi(copy, dir);
            EXPECT_SUCCESS(percent);
            EXPECT_EQ(Unscaled(Qvi(original, kSamples).out), Unscaled(percent.out));
            EXPECT_TRUE(Contains(percent.out, "REFLECTANCE_SCALE\t\"0..100\"")) << percent.out;
        }
    }
}

TEST_F(QviScale, OverrideTheScale)
{
    Put("factor.cgats", FlatFile({{"1", "0.5"}}));
    Put("percent.cgats", FlatFile({{"1", "50"}}));
    const auto lightness = [&](const std::string& file, const std::string& scale) {
        const Outcome outcome = Qvi({"color", file, "--scale", scale, "--decimals", "6"}, dir);
        EXPECT_SUCCESS(outcome);
        return ParseCgats(outcome.out).At(0, "LAB_L");
    };
    EXPECT_NEAR(Lightness(0.5), lightness("factor.cgats", "auto"), 0.01);
    EXPECT_NEAR(Lightness(0.5), lightness("factor.cgats", "1"), 0.01);
    EXPECT_NEAR(Lightness(0.005), lightness("factor.cgats", "100"), 0.01);
    EXPECT_NEAR(Lightness(0.5), lightness("percent.cgats", "auto"), 0.01);
    EXPECT_NEAR(Lightness(0.5), lightness("percent.cgats", "100"), 0.01);
    EXPECT_NEAR(Lightness(50.0), lightness("percent.cgats", "1"), 0.05);
}

// The rule: 0..100 when more than half the samples have a value above 2;
// 0..1 when no value exceeds 1.5; anything else is ambiguous and refused.
TEST_F(QviScale, AutomaticScaleRule)
{
    const auto lightness = [&](const std::vector<std::pair<std::string, std::string>>& samples) {
        Put("rule.cgats", FlatFile(samples));
        const Outcome outcome = Qvi({"color", "rule.cgats", "--decimals", "6"}, dir);
        EXPECT_SUCCESS(outcome);
        return ParseCgats(outcome.out).At(0, "LAB_L");
    };
    EXPECT_NEAR(Lightness(1.5), lightness({{"1", "1.5"}, {"2", "0.5"}}), 0.01);
    EXPECT_NEAR(Lightness(0.0201), lightness({{"1", "2.01"}, {"2", "50"}, {"3", "0.5"}}), 0.01);
    EXPECT_NEAR(Lightness(0.005), lightness({{"1", "0.5"}, {"2", "50"}, {"3", "60"}}), 0.01);
    for (const auto& samples : std::vector<std::vector<std::pair<std::string, std::string>>>{
             {{"1", "2"}, {"2", "0.5"}},
             {{"1", "1.51"}, {"2", "0.5"}},
             {{"1", "2.01"}, {"2", "0.5"}},
             {{"1", "50"}, {"2", "0.5"}},
             {{"1", "50"}, {"2", "0.5"}, {"3", "0.7"}, {"4", "60"}}}) {
        SCOPED_TRACE(samples.front().second + " " + samples.back().second);
        Put("rule.cgats", FlatFile(samples));
        const Outcome outcome = Qvi({"color", "rule.cgats"}, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_TRUE(StartsWith(outcome.err, "qvi: rule.cgats: the reflectance scale is ambiguous: ")) << outcome;
        EXPECT_TRUE(Contains(outcome.err, "give --scale 1")) << outcome;
        EXPECT_TRUE(Contains(outcome.err, "--scale 100")) << outcome;
        // Given, the scale is not questioned.
        EXPECT_SILENT_SUCCESS(Qvi({"color", "rule.cgats", "--scale", "1"}, dir));
        EXPECT_SILENT_SUCCESS(Qvi({"color", "rule.cgats", "--scale", "100"}, dir));
    }
}

// A 0..1 file with one typo above 2 is not read as 0..100: every result would
// change. The message points at the sample.
TEST_F(QviScale, OneOutlierDoesNotChangeTheScale)
{
    const std::string clean = Rewrite(Sample(kOtherChart), Layout{});
    const std::size_t line = LineNumber(clean, "BEGIN_DATA") + 7;
    std::string row = Lines(clean).at(line - 1);
    std::size_t start = 0;
    for (int i = 0; i < 14; ++i) {
        start = row.find('\t', start) + 1;
    }
    row.replace(start, row.find('\t', start) - start, "3.5");
    Put("typo.cgats", ReplaceLine(clean, line, row));
    const Outcome outcome = Qvi({"color", "typo.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: typo.cgats: the reflectance scale is ambiguous: 1 of 24 samples has values above 2 (the first: "
              "sample 7, line " +
                  std::to_string(line) +
                  ": 3.5 in SPECTRAL_NM500), the others none (the first: sample 1, line " +
                  std::to_string(LineNumber(clean, "BEGIN_DATA") + 1) +
                  "); give --scale 1 if the file is 0..1 (then those values are errors or fluorescence) or --scale "
                  "100 if it is 0..100\n",
              outcome.err);
}

// A dark file in percent, every value at most 2, is not read as 0..1.
TEST_F(QviScale, ADarkPercentFileIsNotReadAsFractions)
{
    Put("dark.cgats", FlatFile({{"1", "1.9"}, {"2", "0.8"}, {"3", "1.2"}}));
    const Outcome outcome = Qvi({"color", "dark.cgats"}, dir);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_EQ("qvi: dark.cgats: the reflectance scale is ambiguous: the largest value, 1.9 (sample 1, line 7), is "
              "high for 0..1 and low for 0..100; give --scale 1 or --scale 100\n",
              outcome.err);
    const Outcome percent = Qvi({"color", "dark.cgats", "--scale", "100", "--decimals", "6"}, dir);
    EXPECT_SILENT_SUCCESS(percent);
    EXPECT_NEAR(Lightness(0.019), ParseCgats(percent.out).At(0, "LAB_L"), 0.01);
}

// The scale used is said on standard error (unless given) and in every
// output form.
TEST_F(QviScale, TheScaleUsedIsStated)
{
    Put("percent.cgats", FlatFile({{"1", "50"}, {"2", "60"}, {"3", "1"}}));
    Put("factor.cgats", FlatFile({{"1", "0.5"}}));
    const Outcome percent = Qvi({"color", "percent.cgats"}, dir);
    EXPECT_SUCCESS(percent);
    EXPECT_EQ("qvi: percent.cgats: reflectance read as 0..100: 2 of 3 samples have values above 2 (--scale sets the "
              "scale)\n",
              percent.err);
    EXPECT_EQ("0..100", ParseCgats(percent.out).Keyword("REFLECTANCE_SCALE"));
    const Outcome factor = Qvi({"color", "factor.cgats"}, dir);
    EXPECT_EQ("qvi: factor.cgats: reflectance read as 0..1: no value above 1.5 (--scale sets the scale)\n", factor.err);
    EXPECT_EQ("0..1", ParseCgats(factor.out).Keyword("REFLECTANCE_SCALE"));
    const Json json = ParseJson(Qvi({"color", "factor.cgats", "--format", "json"}, dir).out);
    EXPECT_EQ("0..1", json["header"]["REFLECTANCE_SCALE"].text);
    // Given: no note, the keyword all the same; --quiet drops the note.
    const Outcome given = Qvi({"color", "factor.cgats", "--scale", "100"}, dir);
    EXPECT_SILENT_SUCCESS(given);
    EXPECT_EQ("0..100", ParseCgats(given.out).Keyword("REFLECTANCE_SCALE"));
    EXPECT_SILENT_SUCCESS(Qvi({"color", "factor.cgats", "-q"}, dir));
    EXPECT_SILENT_SUCCESS(Qvi({"color", "factor.cgats", "--quiet"}, dir));
    // Both files of delta-e.
    const Table differences = ParseCgats(Qvi({"delta-e", "percent.cgats", "percent.cgats"}, dir).out);
    EXPECT_EQ("0..100", differences.Keyword("REFERENCE_REFLECTANCE_SCALE"));
    EXPECT_EQ("0..100", differences.Keyword("SAMPLES_REFLECTANCE_SCALE"));
}

// A file with nothing to look up ahead is read once, computing on the scale
// of its first sample; when the whole file decides otherwise every sample
// is computed again. The outcome is that of reading the whole file first.
TEST_F(QviScale, PercentFoundLateRecomputesEverySample)
{
    Put("late.cgats", FlatFile({{"1", "0.5"}, {"2", "1.5"}, {"3", "50"}, {"4", "60"}, {"5", "70"}, {"6", "80"}}));
    for (const char* format : {"cgats", "csv", "json", "table"}) {
        SCOPED_TRACE(format);
        const Outcome automatic = Qvi({"color", "late.cgats", "--format", format}, dir);
        EXPECT_SUCCESS(automatic);
        EXPECT_EQ(Qvi({"color", "late.cgats", "--format", format, "--scale", "100"}, dir).out, automatic.out);
        EXPECT_NE(Qvi({"color", "late.cgats", "--format", format, "--scale", "1"}, dir).out, automatic.out);
    }
    const Table table = ParseCgats(Qvi({"color", "late.cgats", "--decimals", "6"}, dir).out);
    ASSERT_EQ(6u, table.rows.size());
    EXPECT_NEAR(Lightness(0.005), table.At(0, "LAB_L"), 0.01);
    EXPECT_NEAR(Lightness(0.5), table.At(2, "LAB_L"), 0.01);
}

// The rule reads the values as written: 2.00000001 is 2 as a float but
// above 2 as written, and 1.5000000001 above 1.5.
TEST_F(QviScale, TheRuleReadsTheValuesAsWritten)
{
    Put("just.cgats", FlatFile({{"1", "2.00000001"}, {"2", "0.5"}, {"3", "2.00000001"}}));
    Put("two.cgats", FlatFile({{"1", "2.0"}, {"2", "0.5"}, {"3", "2.0"}}));
    EXPECT_EQ(Qvi({"color", "just.cgats", "--scale", "100"}, dir).out, Qvi({"color", "just.cgats"}, dir).out);
    EXPECT_FAILURE(Qvi({"color", "two.cgats"}, dir), 2);
    Put("ceiling.cgats", FlatFile({{"1", "1.5"}}));
    Put("above.cgats", FlatFile({{"1", "1.5000000001"}}));
    EXPECT_EQ(Qvi({"color", "ceiling.cgats", "--scale", "1"}, dir).out, Qvi({"color", "ceiling.cgats"}, dir).out);
    EXPECT_FAILURE(Qvi({"color", "above.cgats"}, dir), 2);
}

// A value the float arithmetic cannot hold, on the file's scale, is refused
// as out of range with file, line and field; nothing is written.
TEST_F(QviScale, ValuesBeyondAFloatAreOutOfRange)
{
    const auto refused = [&](const std::vector<std::pair<std::string, std::string>>& samples, const Strings& more,
                             const std::string& expected) {
        Put("big.cgats", FlatFile(samples));
        Strings arguments = {"color", "big.cgats"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = Qvi(arguments, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ("", outcome.out);
        EXPECT_EQ(expected, BeyondNotes(outcome.err));
    };
    refused({{"1", "0.5"}, {"2", "1e39"}, {"3", "0.25"}}, {"--scale", "1"},
            "qvi: big.cgats:8: the value \"1e39\" of SPECTRAL_NM380 is out of range: on the scale 0..1 it is beyond a "
            "float (3.4e38)\n");
    refused({{"1", "0.5"}, {"2", "1e400"}, {"3", "0.25"}}, {},
            "qvi: big.cgats:8: the value \"1e400\" of SPECTRAL_NM380 is out of range: it does not fit a double\n");
    refused({{"1", "1e-50"}, {"2", "0.25"}}, {},
            "qvi: big.cgats:7: the value \"1e-50\" of SPECTRAL_NM380 is out of range: on the scale 0..1 it is too "
            "close to 0 for a float (1.2e-38); write 0\n");
    refused({{"1", "1e-50"}, {"2", "50"}, {"3", "60"}}, {},
            "qvi: big.cgats:7: the value \"1e-50\" of SPECTRAL_NM380 is out of range: on the scale 0..100 it is "
            "too close to 0 for a float (1.2e-38); write 0\n");
    // A row that is no number at all, anywhere, is reported first.
    refused({{"1", "1e-50"}, {"2", "0.25"}, {"3", "x"}}, {},
            "qvi: big.cgats:9: the value \"x\" of SPECTRAL_NM380 is not a number\n");
    // An outlier of 1e39 in a 0..1 file is first of all a question of scale.
    Put("big.cgats", FlatFile({{"1", "0.5"}, {"2", "1e39"}, {"3", "0.25"}}));
    EXPECT_TRUE(Contains(Qvi({"color", "big.cgats"}, dir).err, "the reflectance scale is ambiguous"));
}

// Values a float holds but the arithmetic does not: a result that is not
// finite is refused with the sample's line and its largest value, never
// written as a blank.
TEST_F(QviScale, ResultsBeyondAFloatAreOutOfRange)
{
    for (const auto& [value, shown] : std::vector<std::pair<std::string, std::string>>{{"1e37", "1e+37"},
                                                                                       {"3e38", "3e+38"}}) {
        SCOPED_TRACE(value);
        Put("huge.cgats", FlatFile({{"1", "0.5"}, {"2", value}, {"3", "0.25"}}));
        for (const Strings& arguments :
             {Strings{"color", "huge.cgats", "--scale", "1"},
              Strings{"color", "huge.cgats", "--scale", "1", "--space", "CIEXYZ", "--format", "json"},
              Strings{"color", "huge.cgats", "--scale", "1", "--space", "CIELCh", "--format", "csv"},
              Strings{"delta-e", "huge.cgats", "huge.cgats", "--scale", "1"},
              Strings{"density", "huge.cgats", "--scale", "1", "--white-base", "Absolute"},
              Strings{"cct", "huge.cgats", "--scale", "1"}}) {
            SCOPED_TRACE(arguments[0] + " " + arguments.back());
            const Outcome outcome = Qvi(arguments, dir);
            EXPECT_FAILURE(outcome, 2);
            EXPECT_TRUE(StartsWith(outcome.err, "qvi: huge.cgats:8: sample 2 is out of range: its ")) << outcome;
            EXPECT_TRUE(Contains(outcome.err, "is not finite; its largest value, " + shown +
                                                  " of SPECTRAL_NM380, is too large for the float arithmetic"))
                << outcome;
        }
        // The result named is the first one that is not finite.
        const std::vector<std::pair<Strings, std::string>> named = {
            {{"color", "huge.cgats", "--scale", "1"}, "LAB_L"},
            {{"color", "huge.cgats", "--scale", "1", "--space", "CIEXYZ"}, "XYZ_X"},
            {{"delta-e", "huge.cgats", "huge.cgats", "--scale", "1"}, "DELTA_E"},
            {{"density", "huge.cgats", "--scale", "1", "--white-base", "Absolute"}, "D_BLACK"},
            {{"cct", "huge.cgats", "--scale", "1"}, "XYZ"}};
        for (const auto& [arguments, result] : named) {
            EXPECT_EQ("qvi: huge.cgats:8: sample 2 is out of range: its " + result + " is not finite; its largest "
                      "value, " + shown + " of SPECTRAL_NM380, is too large for the float arithmetic\n",
                      Qvi(arguments, dir).err);
        }
    }
}

TEST_F(QviScale, ColourTemperatureOfPercentFoundLate)
{
    // Reflectance-like emission rows: the scale only changes the level.
    Put("late.cgats", FlatFile({{"1", "1"}, {"2", "90"}, {"3", "80"}}));
    const Outcome automatic = Qvi({"cct", "late.cgats"}, dir);
    EXPECT_EQ(Qvi({"cct", "late.cgats", "--scale", "100"}, dir).out, automatic.out);
    EXPECT_EQ(Qvi({"cct", "late.cgats", "--scale", "100"}, dir).status, automatic.status);
}

// Relative spectral power around 100 is no percent reflectance: emission
// data keeps its own scale unless --scale says otherwise.
TEST_F(QviScale, EmissionKeepsItsScale)
{
    const Outcome outcome = Qvi({"color", kIlluminants, "--space", "CIEXYZ", "--decimals", "6"});
    EXPECT_SUCCESS(outcome);
    EXPECT_EQ(Qvi({"color", kIlluminants, "--space", "CIEXYZ", "--decimals", "6", "--scale", "1"}).out, outcome.out);
    const Table table = ParseCgats(outcome.out);
    const Table scaled =
        ParseCgats(Qvi({"color", kIlluminants, "--space", "CIEXYZ", "--decimals", "6", "--scale", "100"}).out);
    // No scale is stated for emission, which keeps its own.
    EXPECT_FALSE(table.HasKeyword("REFLECTANCE_SCALE"));
    ASSERT_EQ(6u, scaled.rows.size());
    for (std::size_t r = 0; r < 6; ++r) {
        EXPECT_NEAR(table.At(r, "XYZ_Y") / 100.0, scaled.At(r, "XYZ_Y"), 1e-3) << r;
        EXPECT_GT(table.At(r, "XYZ_Y"), 1000.0) << r;
    }
}

// ======================================================= library failures

using QviLibraryFailure = QviTest;

// A refusal of the library keeps the library's own text and says before it
// which option led there, and after it what to give instead.
TEST_F(QviLibraryFailure, ColourSpaceWithoutVector)
{
    const Outcome outcome = Qvi({"color", kChart, "--space", "CMYK"});
    EXPECT_FAILURE(outcome, 1);
    EXPECT_EQ("qvi: --space CMYK: GetVector not supported for ColorSpace CMYK; give CIELab, CIELCh, CIELuv, CIELChuv, "
              "CIEuvY1960, CIEuvY1976, CIEXYZ, CIExyY, HunterLab, RxRyRz, LABvq, LCHvq, RGB\n",
              BeyondNotes(outcome.err));
}

TEST_F(QviLibraryFailure, IlluminantsQviCannotGiveTheLibrary)
{
    const std::string give = "give A, B, C, D50, D55, D65, D75, F1 ... F12 (e.g. F7), \"Dxx, Temperature:K\" "
                             "(daylight of K kelvin, defined from 4000 to 25000, e.g. \"Dxx, Temperature:5000\"), "
                             "Emission\n";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"F13", "qvi: --illuminant F13: Filter table is empty: its step size is 0; " + give},
        {"Userdefined", "qvi: --illuminant Userdefined: Failed to access to nullpointer.; qvi has no user-defined "
                        "illuminant table; " +
                            give},
        {"Dxx", "qvi: --illuminant Dxx: Dxx is not a valid illuminationtype; " + give},
        {"D93", "qvi: --illuminant D93: D93 is not a valid illuminationtype; " + give}};
    for (const auto& [illuminant, expected] : cases) {
        SCOPED_TRACE(illuminant);
        const Outcome outcome = Qvi({"color", kChart, "--illuminant", illuminant});
        EXPECT_FAILURE(outcome, 1);
        EXPECT_EQ(expected, BeyondNotes(outcome.err));
        // The same through --condition, named as it was given.
        const Outcome byKey = Qvi({"delta-e", kChart, kOtherChart, "--condition",
                                   "Colorimetric.Illumination=" + illuminant});
        EXPECT_FAILURE(byKey, 1);
        EXPECT_TRUE(StartsWith(BeyondNotes(byKey.err),
                               "qvi: --condition Colorimetric.Illumination=" + illuminant + ": "))
            << byKey;
    }
}

TEST_F(QviLibraryFailure, PaperWhiteBasesNeedAPaperWhite)
{
    const Outcome color = Qvi({"color", kChart, "--white-base", "Paper"});
    EXPECT_FAILURE(color, 1);
    EXPECT_EQ("qvi: --white-base Paper: CMetryCalculator; the white base Paper needs a paper white: give "
              "--paper-white ID, or --white-base Absolute\n",
              BeyondNotes(color.err));
    EXPECT_SUCCESS(Qvi({"color", kChart, "--white-base", "Paper", "--paper-white", "19"}));
}

TEST_F(QviLibraryFailure, DensityWithoutPaperWhite)
{
    const Outcome outcome = Qvi({"density", kChart});
    EXPECT_FAILURE(outcome, 1);
    EXPECT_EQ("qvi: density's default white base Automatic: Missing WhiteReference; the white base Automatic needs a "
              "paper white: give --paper-white ID, or --white-base Absolute\n",
              BeyondNotes(outcome.err));
    EXPECT_SUCCESS(Qvi({"density", kChart, "--white-base", "Absolute"}));
}

TEST_F(QviLibraryFailure, AValueTheLibraryRefuses)
{
    const Outcome outcome = Qvi({"color", kChart, "--condition", "Physical.Filter=bogus"});
    EXPECT_FAILURE(outcome, 1);
    EXPECT_EQ("qvi: --condition Physical.Filter=bogus: bogus is not a valid whitespacetype; give No, Polarizer, "
              "UVCut, D65, Custom, CalibrationCheck, ND0\n",
              BeyondNotes(outcome.err));
}

// Each key's refusal says what to give instead; where no single setting is
// to blame, every setting is named.
TEST_F(QviLibraryFailure, EveryRefusalSaysWhatToGive)
{
    const std::vector<std::pair<Strings, std::string>> cases = {
        {{"cct", kIlluminants, "--observer", "OneDegree"},
         "qvi: --observer OneDegree: OneDegree is not a valid observertype; give TwoDegree or TenDegree (2, 10)\n"},
        {{"delta-e", kChart, kOtherChart, "--formula", "93"},
         "qvi: --formula 93: 93 is not a valid delta E formula; give CIELab, CIELuv, LABvq, FMCII, CMC, 94 or "
         "2000\n"},
        {{"color", kChart, "--white-base", "Bogus"},
         "qvi: --white-base Bogus: Bogus is not a valid whitespacetype; give Absolute, Paper, Automatic\n"},
        {{"color", kChart, "--illuminant", "Userdefined", "--space", "CMYK"},
         "qvi: qvi color with color's default white base Absolute, --illuminant Userdefined, --space CMYK: "
         "GetVector not supported for ColorSpace CMYK\n"}};
    for (const auto& [arguments, expected] : cases) {
        SCOPED_TRACE(arguments.back());
        const Outcome outcome = Qvi(arguments);
        EXPECT_FAILURE(outcome, 1);
        EXPECT_EQ(expected, BeyondNotes(outcome.err));
    }
}

// A refusal that comes from one sample names the sample.
TEST_F(QviLibraryFailure, ASampleTheLibraryRefuses)
{
    Put("black.cgats", FlatFile({{"1", "0.5"}, {"2", "0"}}));
    const Outcome outcome = Qvi({"density", "black.cgats", "--white-base", "Absolute"}, dir);
    EXPECT_FAILURE(outcome, 1);
    EXPECT_EQ("qvi: sample 2 (black.cgats line 8): Calculation of Density failed\n", BeyondNotes(outcome.err));
}

// Within one reading a refusal of the library waits until the file is
// checked to its end: a broken row anywhere is what is reported.
TEST_F(QviLibraryFailure, ABrokenRowIsReportedBeforeARefusal)
{
    const std::string clean = Rewrite(Sample(kChips), Layout{});
    const std::size_t line = LineNumber(clean, "END_DATA") - 1;
    Put(kChips, ReplaceLine(clean, line, "1269\t\"broken\"\t0.5"));
    const std::string broken = "qvi: " + kChips + ":" + std::to_string(line) + ": the row has 3 values for 38 fields\n";
    for (const Strings& arguments :
         {Strings{"color", kChips, "--space", "CMYK"}, Strings{"color", kChips, "--illuminant", "D99x"},
          Strings{"cct", kChips}, Strings{"delta-e", kChips, kChips, "--reference", "no such id"}}) {
        SCOPED_TRACE(arguments[0] + " " + arguments.back());
        const Outcome outcome = Qvi(arguments, dir);
        EXPECT_FAILURE(outcome, 2);
        EXPECT_EQ(broken, outcome.err);
    }
    Put(kChips, clean);
    EXPECT_FAILURE(Qvi({"color", kChips, "--space", "CMYK"}, dir), 1);
}

// The dot area compares densities relative to the paper: without a paper
// white the sample that asks for it says so.
TEST_F(QviLibraryFailure, DotAreaNeedsAPaperWhite)
{
    Put("flat.cgats", FlatFile({{"1", "0.8"}, {"2", "0.4"}}));
    const Outcome outcome = Qvi({"density", "flat.cgats", "--solid", "2", "--white-base", "Absolute"}, dir);
    EXPECT_FAILURE(outcome, 1);
    EXPECT_EQ("qvi: sample 1 (flat.cgats line 7): the dot area against the solid 2 cannot be calculated; it needs a "
              "paper white: give --paper-white ID\n",
              BeyondNotes(outcome.err));
}

TEST_F(QviLibraryFailure, ARefusedConditionWithPercentFoundLate)
{
    Put("late.cgats", FlatFile({{"1", "0.5"}, {"2", "50"}, {"3", "60"}}));
    for (const Strings& arguments : {Strings{"color", "late.cgats", "--illuminant", "D99x"},
                                     Strings{"cct", "late.cgats", "--observer", "OneDegree"},
                                     Strings{"delta-e", "late.cgats", "late.cgats", "--illuminant", "D99x"}}) {
        SCOPED_TRACE(arguments[0]);
        const Outcome outcome = Qvi(arguments, dir);
        EXPECT_FAILURE(outcome, 1);
        Strings fixed = arguments;
        fixed.insert(fixed.end(), {"--scale", "100"});
        EXPECT_EQ(Qvi(fixed, dir).err, BeyondNotes(outcome.err));
    }
}

TEST_F(QviLibraryFailure, SpectrumOutOfRange)
{
    const Outcome outcome = Qvi({"spectrum", "100", "120", "120"});
    EXPECT_FAILURE(outcome, 1);
    EXPECT_EQ("qvi: CIELab 100.0000 120.0000 120.0000: CMetryCalculator: Conversion out of Range; no reflectance "
              "spectrum between 0 and 1 reaches this value (try a value closer to the neutral axis or lighter than "
              "black)\n",
              outcome.err);
}

TEST_F(QviLibraryFailure, UnknownConditionKey)
{
    const Outcome outcome = Qvi({"color", kChart, "--condition", "Colorimetric.Bogus=1"});
    EXPECT_FAILURE(outcome, 1);
    EXPECT_TRUE(StartsWith(BeyondNotes(outcome.err), "qvi: --condition Colorimetric.Bogus=1: ")) << outcome;
    EXPECT_TRUE(Contains(outcome.err, "Colorimetric.Bogus")) << outcome;
    EXPECT_TRUE(Contains(outcome.err, "; `qvi conditions` lists the keys\n")) << outcome;
}

TEST_F(QviLibraryFailure, UnknownIlluminant)
{
    const Outcome outcome = Qvi({"color", kChart, "--illuminant", "D99x"});
    EXPECT_FAILURE(outcome, 1);
    EXPECT_TRUE(Contains(outcome.err, "D99x")) << outcome;
}

// A daylight temperature outside the formula's domain is used as the
// library uses it, with a warning.
TEST_F(QviLibraryFailure, DaylightOutsideItsDomainIsWarnedOf)
{
    for (const char* kelvin : {"100", "-5", "3999", "25001"}) {
        SCOPED_TRACE(kelvin);
        const std::string illuminant = std::string("Dxx, Temperature:") + kelvin;
        const Outcome outcome = Qvi({"color", kChart, "--illuminant", illuminant, "-q"});
        EXPECT_EQ(0, outcome.status) << outcome;
        EXPECT_EQ("qvi: warning: --illuminant \"" + illuminant + "\": " + kelvin +
                      " K is outside 4000..25000 K, where the daylight formula is defined; the results follow the "
                      "formula beyond it\n",
                  outcome.err);
        EXPECT_FALSE(outcome.out.empty());
    }
    for (const char* kelvin : {"4000", "6500", "25000"}) {
        EXPECT_SILENT_SUCCESS(Qvi({"color", kChart, "--illuminant", std::string("Dxx, Temperature:") + kelvin, "-q"}));
    }
}

// ============================================================ output file

using QviOutputFile = QviTest;

TEST_F(QviOutputFile, WrittenOnSuccess)
{
    const Outcome plain = Qvi({"color", kChart, "--format", "json"});
    for (const char* option : {"--output", "-o"}) {
        const std::string path = Path(std::string("result") + option + ".json");
        const Outcome outcome = Qvi({"color", kChart, option, path, "--format", "json"});
        EXPECT_SUCCESS(outcome);
        EXPECT_EQ("", outcome.out);
        EXPECT_EQ(plain.out, ReadFile(path));
    }
    const std::string path = Path("inline.cgats");
    EXPECT_SUCCESS(Qvi({"color", kChart, "--output=" + path}));
    EXPECT_EQ(Qvi({"color", kChart}).out, ReadFile(path));
    // Nothing but the outputs is left behind.
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(dir)) {
        (void)entry;
        ++files;
    }
    EXPECT_EQ(3u, files);
}

TEST_F(QviOutputFile, NoFileAfterAFailedRun)
{
    Put("letter.txt", "Dear colleague\n");
    for (const Strings& arguments :
         {Strings{"color", SamplePath(kChart), "--space", "CMYK"}, Strings{"density", SamplePath(kChart)},
          Strings{"color", "letter.txt"}, Strings{"color", "absent.cgats"}}) {
        SCOPED_TRACE(arguments[1]);
        Strings withOutput = arguments;
        withOutput.insert(withOutput.end(), {"--output", Path("result.cgats")});
        const Outcome outcome = Qvi(withOutput, dir);
        EXPECT_NE(0, outcome.status);
        EXPECT_EQ("", outcome.out);
        EXPECT_FALSE(fs::exists(Path("result.cgats")));
    }
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(dir)) {
        EXPECT_EQ("letter.txt", entry.path().filename().string());
        ++files;
    }
    EXPECT_EQ(1u, files);
}

TEST_F(QviOutputFile, AFailedRunLeavesAnOlderFileAlone)
{
    const std::string path = Put("result.cgats", "older content\n");
    const Outcome outcome = Qvi({"color", kChart, "--space", "CMYK", "-o", path});
    EXPECT_FAILURE(outcome, 1);
    EXPECT_EQ("older content\n", ReadFile(path));
}

TEST_F(QviOutputFile, UnwritableOutput)
{
    const Outcome outcome = Qvi({"color", kChart, "--output", Path("no/such/directory/result.cgats")});
    EXPECT_NE(0, outcome.status);
    EXPECT_EQ("", outcome.out);
    EXPECT_TRUE(Contains(outcome.err, "result.cgats")) << outcome;
}

// ============================================================== conditions

using QviConditions = QviTest;

TEST_F(QviConditions, ConditionReachesTheObserver)
{
    const Outcome byKey = Qvi({"color", kChart, "--condition", "Colorimetric.Observer=TenDegree"});
    EXPECT_SUCCESS(byKey);
    EXPECT_EQ(Qvi({"color", kChart, "--observer", "TenDegree"}).out, byKey.out);
    EXPECT_EQ(Qvi({"color", kChart, "--observer", "10"}).out, byKey.out);
    EXPECT_EQ(Qvi({"color", kChart, "--condition=Colorimetric.Observer=TenDegree"}).out, byKey.out);
    const Table ten = ParseCgats(byKey.out);
    const Table two = ParseCgats(Qvi({"color", kChart}).out);
    EXPECT_EQ("TenDegree", ten.Keyword("OBSERVER"));
    // The numbers change.
    std::size_t changed = 0;
    for (std::size_t r = 0; r < 24; ++r) {
        changed += ten.Value(r, "LAB_A") != two.Value(r, "LAB_A") ? 1 : 0;
    }
    EXPECT_GT(changed, 20u);
}

TEST_F(QviConditions, ConditionReachesTheIlluminationAndTheSpace)
{
    EXPECT_EQ(Qvi({"color", kOtherChart, "--illuminant", "D50"}).out,
              Qvi({"color", kOtherChart, "--condition", "Colorimetric.Illumination=D50"}).out);
    EXPECT_EQ(Qvi({"color", kOtherChart, "--space", "CIEXYZ"}).out,
              Qvi({"color", kOtherChart, "--condition", "ColorSpaceDescription.Type=CIEXYZ"}).out);
    EXPECT_EQ(Qvi({"delta-e", kChart, kOtherChart, "--formula", "CMC"}).out,
              Qvi({"delta-e", kChart, kOtherChart, "--condition", "ColorSpaceDescription.DeltaEFormula=CMC"}).out);
    EXPECT_NE(Qvi({"color", kOtherChart}).out, Qvi({"color", kOtherChart, "--illuminant", "D50"}).out);
}

TEST_F(QviConditions, WhiteBasePaperRelativeToThePaperWhite)
{
    const Outcome outcome =
        Qvi({"color", kOtherChart, "--white-base", "Paper", "--paper-white", "19", "--decimals", "6"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ("Paper", table.Keyword("WHITE_BASE"));
    const std::size_t white = table.Row("19");
    EXPECT_NEAR(100.0, table.At(white, "LAB_L"), 1e-3);
    EXPECT_NEAR(0.0, table.At(white, "LAB_A"), 1e-3);
    EXPECT_NEAR(0.0, table.At(white, "LAB_B"), 1e-3);
    // Everything else is relative to it: lighter than absolute.
    const Table absolute = ParseCgats(Qvi({"color", kOtherChart, "--decimals", "6"}).out);
    EXPECT_GT(table.At(table.Row("22"), "LAB_L"), absolute.At(absolute.Row("22"), "LAB_L"));
}

// A named paper white makes colour relative to it unless --white-base says
// otherwise.
TEST_F(QviConditions, PaperWhiteAloneMeansWhiteBasePaper)
{
    const Outcome implied = Qvi({"color", kOtherChart, "--paper-white", "19"});
    EXPECT_SUCCESS(implied);
    EXPECT_EQ(Qvi({"color", kOtherChart, "--paper-white", "19", "--white-base", "Paper"}).out, implied.out);
    EXPECT_EQ("Paper", ParseCgats(implied.out).Keyword("WHITE_BASE"));
    const Outcome absolute = Qvi({"color", kOtherChart, "--paper-white", "19", "--white-base", "Absolute"});
    EXPECT_SUCCESS(absolute);
    EXPECT_EQ("Absolute", ParseCgats(absolute.out).Keyword("WHITE_BASE"));
    std::string expected = Qvi({"color", kOtherChart}).out;
    EXPECT_EQ(expected, absolute.out);
}

// ================================================================= delta-e

using QviDeltaE = QviTest;

struct Summary {
    double mean = 0.0;
    std::string maximum;
    std::string p95;
    std::size_t exceeding = 0;
    std::string ids;
};

// The summary recomputed from the rows: the mean, the largest value, the
// nearest-rank 95th percentile, and the samples above the tolerance.
Summary Recompute(const Table& table, double tolerance)
{
    Summary summary;
    std::vector<std::pair<double, std::string>> values;
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        const double value = table.At(r, "DELTA_E");
        values.emplace_back(value, table.Value(r, "DELTA_E"));
        summary.mean += value;
        const bool exceeds = table.Value(r, "EXCEEDS") == "1";
        EXPECT_TRUE(table.Value(r, "EXCEEDS") == "0" || exceeds);
        // The flag agrees with the printed value, up to its rounding.
        if (value > tolerance + 1e-4) {
            EXPECT_TRUE(exceeds) << r;
        } else if (value < tolerance - 1e-4) {
            EXPECT_FALSE(exceeds) << r;
        }
        if (exceeds) {
            ++summary.exceeding;
            summary.ids += (summary.ids.empty() ? "" : " ") + table.Value(r, "SAMPLE_ID");
        }
    }
    summary.mean /= static_cast<double>(values.size());
    std::sort(values.begin(), values.end());
    summary.maximum = values.back().second;
    const std::size_t rank = (95 * values.size() + 99) / 100;
    summary.p95 = values.at(rank - 1).second;
    return summary;
}

void ExpectSummary(const Table& table, double tolerance)
{
    const Summary summary = Recompute(table, tolerance);
    EXPECT_NEAR(summary.mean, Number(table.Keyword("DELTA_E_MEAN")), 1e-4);
    EXPECT_EQ(summary.maximum, table.Keyword("DELTA_E_MAX"));
    EXPECT_EQ(summary.p95, table.Keyword("DELTA_E_P95"));
    EXPECT_NEAR(tolerance, Number(table.Keyword("DELTA_E_TOLERANCE")), 1e-9);
    EXPECT_EQ(std::to_string(summary.exceeding), table.Keyword("DELTA_E_EXCEEDING"));
}

TEST_F(QviDeltaE, SummaryRecomputedFromTheRows)
{
    for (double tolerance : {2.0, 1.0, 0.5, 10.0}) {
        SCOPED_TRACE(tolerance);
        const Outcome outcome = Qvi({"delta-e", kChart, kOtherChart, "--tolerance", std::to_string(tolerance)});
        EXPECT_SUCCESS(outcome);
        const Table table = ParseCgats(outcome.out);
        EXPECT_EQ((Strings{"SAMPLE_ID", "SAMPLE_NAME", "REFERENCE_ID", "DELTA_E", "EXCEEDS"}), table.fields);
        ASSERT_EQ(24u, table.rows.size());
        for (std::size_t r = 0; r < 24; ++r) {
            EXPECT_EQ(table.Value(r, "SAMPLE_ID"), table.Value(r, "REFERENCE_ID"));
        }
        EXPECT_EQ("CIELab", table.Keyword("DELTA_E_FORMULA"));
        EXPECT_EQ("colour differences of " + kOtherChart + " against " + kChart, table.Keyword("DESCRIPTOR"));
        ExpectSummary(table, tolerance);
    }
}

TEST_F(QviDeltaE, SummaryInEveryFormat)
{
    const Table cgats = ParseCgats(Qvi({"delta-e", kChart, kOtherChart, "--tolerance", "1.5"}).out);
    const Summary summary = Recompute(cgats, 1.5);
    const std::map<std::string, std::string> expected = {{"samples", "24"},
                                                         {"mean", cgats.Keyword("DELTA_E_MEAN")},
                                                         {"maximum", cgats.Keyword("DELTA_E_MAX")},
                                                         {"p95", cgats.Keyword("DELTA_E_P95")},
                                                         {"tolerance", "1.5000"},
                                                         {"exceeding", cgats.Keyword("DELTA_E_EXCEEDING")},
                                                         {"exceeding_ids", summary.ids}};
    ASSERT_GT(summary.exceeding, 1u);

    // CSV holds the table only; its summary goes to standard error.
    const Outcome csvRun = Qvi({"delta-e", kChart, kOtherChart, "--tolerance", "1.5", "--format", "csv"});
    EXPECT_TRUE(ParseCsv(csvRun.out).summary.empty());
    EXPECT_EQ(expected, SummaryLines(csvRun.err));

    // JSON: numbers as numbers, the ids as an array of strings.
    const Json json = ParseJson(Qvi({"delta-e", kChart, kOtherChart, "--tolerance", "1.5", "--format", "json"}).out);
    std::map<std::string, std::string> fromJson;
    for (const auto& [key, value] : json["summary"].members) {
        if (key == "exceeding_ids") {
            EXPECT_EQ(Json::Kind::Array, value.kind);
            for (const Json& id : value.items) {
                EXPECT_EQ(Json::Kind::String, id.kind);
                fromJson[key] += (fromJson[key].empty() ? "" : " ") + id.text;
            }
            continue;
        }
        fromJson[key] = value.text;
        EXPECT_EQ(Json::Kind::Number, value.kind) << key;
    }
    EXPECT_EQ(expected, fromJson);
    for (const char* key : {"DELTA_E_MEAN", "DELTA_E_MAX", "DELTA_E_P95", "DELTA_E_TOLERANCE", "DELTA_E_EXCEEDING"}) {
        EXPECT_EQ(Json::Kind::Number, json["header"][key].kind) << key;
        EXPECT_EQ(cgats.Keyword(key), json["header"][key].text) << key;
    }
    for (const char* key : {"ORIGINATOR", "DELTA_E_FORMULA", "ILLUMINATION", "REFERENCE_REFLECTANCE_SCALE"}) {
        EXPECT_EQ(Json::Kind::String, json["header"][key].kind) << key;
    }

    const Strings lines = Lines(Qvi({"delta-e", kChart, kOtherChart, "--tolerance", "1.5", "--format", "table"}).out);
    ASSERT_EQ(25u + 1u + expected.size(), lines.size());
    std::map<std::string, std::string> fromTable;
    for (std::size_t i = 26; i < lines.size(); ++i) {
        const std::size_t colon = lines[i].find(':');
        ASSERT_NE(std::string::npos, colon) << lines[i];
        const std::size_t value = lines[i].find_first_not_of(' ', colon + 1);
        fromTable[lines[i].substr(0, colon)] = value == std::string::npos ? "" : lines[i].substr(value);
    }
    EXPECT_EQ(expected, fromTable);
}

// The JSON summary keeps its types whatever the data: the list of samples
// above the tolerance is an array even when it names only one sample, or
// none.
TEST_F(QviDeltaE, JsonSummaryTypesDoNotDependOnTheData)
{
    for (const auto& [tolerance, count] : std::vector<std::pair<std::string, std::size_t>>{{"3", 1}, {"100", 0},
                                                                                        {"0", 24}}) {
        SCOPED_TRACE(tolerance);
        const Outcome outcome = Qvi({"delta-e", kChart, kOtherChart, "--tolerance", tolerance, "--format", "json"});
        EXPECT_SUCCESS(outcome);
        const Json json = ParseJson(outcome.out);
        EXPECT_EQ(Json::Kind::Array, json["summary"]["exceeding_ids"].kind);
        EXPECT_EQ(count, json["summary"]["exceeding_ids"].items.size());
        EXPECT_EQ(Json::Kind::Number, json["summary"]["exceeding"].kind);
    }
}

// With the default formula the difference is the distance of the Lab values.
TEST_F(QviDeltaE, DifferenceIsTheLabDistance)
{
    const Table reference = ParseCgats(Qvi({"color", kChart, "--decimals", "7"}).out);
    const Table samples = ParseCgats(Qvi({"color", kOtherChart, "--decimals", "7"}).out);
    const Table table = ParseCgats(Qvi({"delta-e", kChart, kOtherChart, "--decimals", "6"}).out);
    ASSERT_EQ(24u, table.rows.size());
    for (std::size_t r = 0; r < 24; ++r) {
        const std::size_t s = samples.Row(table.Value(r, "SAMPLE_ID"));
        const std::size_t f = reference.Row(table.Value(r, "REFERENCE_ID"));
        const double distance = std::sqrt(std::pow(samples.At(s, "LAB_L") - reference.At(f, "LAB_L"), 2) +
                                          std::pow(samples.At(s, "LAB_A") - reference.At(f, "LAB_A"), 2) +
                                          std::pow(samples.At(s, "LAB_B") - reference.At(f, "LAB_B"), 2));
        EXPECT_NEAR(distance, table.At(r, "DELTA_E"), 1e-4) << r;
    }
}

// CIE94 weighs chroma and hue down, never up.
TEST_F(QviDeltaE, Cie94IsAtMostTheLabDistance)
{
    const Table lab = ParseCgats(Qvi({"delta-e", kChart, kOtherChart, "--decimals", "6"}).out);
    const Table cie94 = ParseCgats(Qvi({"delta-e", kChart, kOtherChart, "--formula", "94", "--decimals", "6"}).out);
    EXPECT_EQ("94", cie94.Keyword("DELTA_E_FORMULA"));
    ASSERT_EQ(24u, cie94.rows.size());
    std::size_t smaller = 0;
    for (std::size_t r = 0; r < 24; ++r) {
        EXPECT_LE(cie94.At(r, "DELTA_E"), lab.At(r, "DELTA_E") + 1e-5) << r;
        smaller += cie94.At(r, "DELTA_E") < lab.At(r, "DELTA_E") - 1e-3 ? 1 : 0;
    }
    EXPECT_GT(smaller, 12u);
    ExpectSummary(cie94, 2.0);
}

TEST_F(QviDeltaE, OneReferenceAgainstAllSamples)
{
    // A reference file of one sample: the white patch of the chart.
    Table white = Sample(kChart);
    white.rows = {white.rows.at(white.Row("19"))};
    const std::string path = Put("white.cgats", Rewrite(white, Layout{}));
    const Outcome outcome = Qvi({"delta-e", path, kChart, "--decimals", "6"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    ASSERT_EQ(24u, table.rows.size());
    const Table lab = ParseCgats(Qvi({"color", kChart, "--decimals", "7"}).out);
    const std::size_t w = lab.Row("19");
    for (std::size_t r = 0; r < 24; ++r) {
        EXPECT_EQ("19", table.Value(r, "REFERENCE_ID"));
        const std::size_t s = lab.Row(table.Value(r, "SAMPLE_ID"));
        const double distance = std::sqrt(std::pow(lab.At(s, "LAB_L") - lab.At(w, "LAB_L"), 2) +
                                          std::pow(lab.At(s, "LAB_A") - lab.At(w, "LAB_A"), 2) +
                                          std::pow(lab.At(s, "LAB_B") - lab.At(w, "LAB_B"), 2));
        EXPECT_NEAR(distance, table.At(r, "DELTA_E"), 1e-4) << r;
    }
    EXPECT_EQ("0.000000", table.Value(table.Row("19"), "DELTA_E"));
    ExpectSummary(table, 2.0);
}

TEST_F(QviDeltaE, OneReferenceAgainstAThousandSamples)
{
    Table first = Sample(kChips);
    first.rows.resize(1);
    const std::string path = Put("first.cgats", Rewrite(first, Layout{}));
    const Outcome outcome = Qvi({"delta-e", path, kChips, "--tolerance", "30"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    ASSERT_EQ(1269u, table.rows.size());
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        ASSERT_EQ("1", table.Value(r, "REFERENCE_ID"));
    }
    EXPECT_EQ("0.0000", table.Value(0, "DELTA_E"));
    ExpectSummary(table, 30.0);
}

// The summary lists the first 20 samples above the tolerance and counts the
// rest; the EXCEEDS column marks them all.
// The machine forms list every sample above the tolerance; the table, read
// by a person, the first 20 and the count of the rest.
TEST_F(QviDeltaE, ListOfExceedingSamplesIsCompleteWhereMachinesReadIt)
{
    Table first = Sample(kChips);
    first.rows.resize(1);
    const std::string path = Put("first.cgats", Rewrite(first, Layout{}));
    const Outcome outcome = Qvi({"delta-e", path, kChips, "--tolerance", "30", "--format", "csv"});
    EXPECT_EQ(0, outcome.status) << outcome;
    const Csv csv = ParseCsv(outcome.out);
    ASSERT_EQ(1270u, csv.lines.size());
    Strings ids;
    for (std::size_t r = 1; r < csv.lines.size(); ++r) {
        if (csv.lines[r].back() == "1") {
            ids.push_back(csv.lines[r][0]);
        }
    }
    ASSERT_GT(ids.size(), 20u);
    std::string all;
    std::string first20;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        all += (i > 0 ? " " : "") + ids[i];
        if (i < 20) {
            first20 += (i > 0 ? " " : "") + ids[i];
        }
    }
    const std::map<std::string, std::string> summary = SummaryLines(outcome.err);
    EXPECT_EQ(all, summary.at("exceeding_ids"));
    EXPECT_EQ(std::to_string(ids.size()), summary.at("exceeding"));
    const Json json = ParseJson(Qvi({"delta-e", path, kChips, "--tolerance", "30", "--format", "json"}).out);
    ASSERT_EQ(ids.size(), json["summary"]["exceeding_ids"].items.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_EQ(ids[i], json["summary"]["exceeding_ids"].items[i].text);
    }
    const std::string table = Qvi({"delta-e", path, kChips, "--tolerance", "30", "--format", "table"}).out;
    EXPECT_TRUE(Contains(table, "\nexceeding_ids: " + first20 + " ... (" + std::to_string(ids.size() - 20) +
                                    " more)\n"));
}

TEST_F(QviDeltaE, ReferenceOption)
{
    const Outcome outcome = Qvi({"delta-e", kChart, kOtherChart, "--reference", "19", "--decimals", "6"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    const Table reference = ParseCgats(Qvi({"color", kChart, "--decimals", "7"}).out);
    const Table samples = ParseCgats(Qvi({"color", kOtherChart, "--decimals", "7"}).out);
    const std::size_t w = reference.Row("19");
    ASSERT_EQ(24u, table.rows.size());
    for (std::size_t r = 0; r < 24; ++r) {
        EXPECT_EQ("19", table.Value(r, "REFERENCE_ID"));
        const std::size_t s = samples.Row(table.Value(r, "SAMPLE_ID"));
        const double distance = std::sqrt(std::pow(samples.At(s, "LAB_L") - reference.At(w, "LAB_L"), 2) +
                                          std::pow(samples.At(s, "LAB_A") - reference.At(w, "LAB_A"), 2) +
                                          std::pow(samples.At(s, "LAB_B") - reference.At(w, "LAB_B"), 2));
        EXPECT_NEAR(distance, table.At(r, "DELTA_E"), 1e-4) << r;
    }
    ExpectSummary(table, 2.0);
}

TEST_F(QviDeltaE, UnknownReferenceId)
{
    const Outcome outcome = Qvi({"delta-e", kChart, kOtherChart, "--reference", "99"});
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(Contains(outcome.err, "99")) << outcome;
}

TEST_F(QviDeltaE, SampleWithoutReference)
{
    Table some = Sample(kChart);
    some.rows.resize(3);
    const std::string path = Put("three.cgats", Rewrite(some, Layout{}));
    const Outcome outcome = Qvi({"delta-e", path, kOtherChart});
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(Contains(outcome.err, "no reference with SAMPLE_ID 4")) << outcome;
}

// ================================================================= density

using QviDensity = QviTest;

// Flat spectra: every filter sees the same reflectance, so the densities
// and the dot area follow from the reflectances alone.
TEST_F(QviDensity, FlatSpectraWithPaperWhiteSolidAndTint)
{
    Put("flat.cgats", FlatFile({{"1", "0.8"}, {"2", "0.4"}, {"3", "0.1"}, {"4", "0.2"}}));
    const Outcome outcome = Qvi(
        {"density", "flat.cgats", "--paper-white", "1", "--solid", "3", "--tint", "2=50", "--decimals", "6"}, dir);
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ((Strings{"SAMPLE_ID", "D_BLACK", "D_CYAN", "D_MAGENTA", "D_YELLOW", "D_AUTO", "FILTER", "DOT_AREA",
                       "NOMINAL", "DOT_GAIN"}),
              table.fields);
    EXPECT_EQ("1", table.Keyword("PAPER_WHITE"));
    EXPECT_EQ("3", table.Keyword("SOLID"));
    ASSERT_EQ(4u, table.rows.size());
    // Densities relative to the paper white.
    const double density[] = {0.0, std::log10(2.0), std::log10(8.0), std::log10(4.0)};
    for (std::size_t r = 0; r < 4; ++r) {
        for (const char* field : {"D_BLACK", "D_CYAN", "D_MAGENTA", "D_YELLOW", "D_AUTO"}) {
            EXPECT_NEAR(density[r], table.At(r, field), 1e-4) << r << ' ' << field;
        }
        // Murray-Davies: (1 - 10^-D tint) / (1 - 10^-D solid).
        const double area = 100.0 * (1.0 - std::pow(10.0, -density[r])) / (1.0 - std::pow(10.0, -density[2]));
        EXPECT_NEAR(area, table.At(r, "DOT_AREA"), 1e-3) << r;
    }
    EXPECT_NEAR(400.0 / 7.0, table.At(1, "DOT_AREA"), 1e-3);
    EXPECT_NEAR(50.0, table.At(1, "NOMINAL"), 1e-9);
    EXPECT_NEAR(400.0 / 7.0 - 50.0, table.At(1, "DOT_GAIN"), 1e-3);
    // Rows that are no tint have no nominal value and no dot gain.
    for (std::size_t r : {0u, 2u, 3u}) {
        EXPECT_EQ("", table.Value(r, "NOMINAL"));
        EXPECT_EQ("", table.Value(r, "DOT_GAIN"));
    }
}

TEST_F(QviDensity, AbsoluteDensityOfFlatSpectra)
{
    Put("flat.cgats", FlatFile({{"1", "1"}, {"2", "0.5"}, {"3", "0.01"}}));
    const Outcome outcome = Qvi({"density", "flat.cgats", "--white-base", "Absolute", "--decimals", "6"}, dir);
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ("Absolute", table.Keyword("WHITE_BASE"));
    const double density[] = {0.0, std::log10(2.0), 2.0};
    for (std::size_t r = 0; r < 3; ++r) {
        for (const char* field : {"D_BLACK", "D_CYAN", "D_MAGENTA", "D_YELLOW"}) {
            EXPECT_NEAR(density[r], table.At(r, field), 1e-4) << r << ' ' << field;
        }
    }
}

TEST_F(QviDensity, ChartWithPaperWhite)
{
    const Outcome outcome = Qvi({"density", kChart, "--paper-white", "19"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    ASSERT_EQ(24u, table.rows.size());
    EXPECT_EQ("DIN", table.Keyword("DENSITY_STANDARD"));
    EXPECT_EQ("19", table.Keyword("PAPER_WHITE"));
    const std::size_t white = table.Row("19");
    for (const char* field : {"D_BLACK", "D_CYAN", "D_MAGENTA", "D_YELLOW", "D_AUTO"}) {
        EXPECT_EQ("0.0000", table.Value(white, field)) << field;
    }
    // The grey scale gets denser; the automatic density is the one of the
    // filter it names; the primaries are seen through their complementary
    // filter.
    for (int id = 20; id <= 24; ++id) {
        EXPECT_GT(table.At(table.Row(std::to_string(id)), "D_BLACK"),
                  table.At(table.Row(std::to_string(id - 1)), "D_BLACK"));
    }
    for (std::size_t r = 0; r < 24; ++r) {
        const std::string filter = table.Value(r, "FILTER");
        std::string field = "D_";
        for (char c : filter) {
            field += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        EXPECT_EQ(table.Value(r, field), table.Value(r, "D_AUTO")) << r;
    }
    EXPECT_EQ("Cyan", table.Value(table.Row("18"), "FILTER"));
    EXPECT_EQ("Magenta", table.Value(table.Row("17"), "FILTER"));
    EXPECT_EQ("Yellow", table.Value(table.Row("16"), "FILTER"));
    EXPECT_EQ("Black", table.Value(table.Row("22"), "FILTER"));
}

TEST_F(QviDensity, DotAreaThroughAFixedFilterIsMurrayDavies)
{
    const Outcome outcome = Qvi({"density", kChart, "--paper-white", "19", "--solid", "13", "--filter-mode", "Cyan",
                                 "--decimals", "6"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    const double solid = table.At(table.Row("13"), "D_CYAN");
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        const double area = 100.0 * (1.0 - std::pow(10.0, -table.At(r, "D_CYAN"))) / (1.0 - std::pow(10.0, -solid));
        EXPECT_NEAR(area, table.At(r, "DOT_AREA"), 1e-3) << r;
    }
    EXPECT_EQ("100.000000", table.Value(table.Row("13"), "DOT_AREA"));
    EXPECT_EQ("0.000000", table.Value(table.Row("19"), "DOT_AREA"));
}

// In the automatic filter mode the dot area uses one filter for solid and
// tint: the one the solid selects.
TEST_F(QviDensity, DotAreaInAutomaticModeUsesTheFilterOfTheSolid)
{
    const Table automatic =
        ParseCgats(Qvi({"density", kChart, "--paper-white", "19", "--solid", "13", "--decimals", "6"}).out);
    ASSERT_EQ(24u, automatic.rows.size());
    const std::string filter = automatic.Value(automatic.Row("13"), "FILTER");
    ASSERT_EQ("Cyan", filter);
    const Table fixed = ParseCgats(Qvi({"density", kChart, "--paper-white", "19", "--solid", "13", "--filter-mode",
                                        filter, "--decimals", "6"})
                                       .out);
    ASSERT_EQ(24u, fixed.rows.size());
    for (std::size_t r = 0; r < 24; ++r) {
        EXPECT_NEAR(fixed.At(r, "DOT_AREA"), automatic.At(r, "DOT_AREA"), 1e-4)
            << "sample " << automatic.Value(r, "SAMPLE_ID") << " (" << automatic.Value(r, "FILTER") << ")";
    }
}

TEST_F(QviDensity, DotGainOfTints)
{
    const Outcome outcome = Qvi({"density", kChart, "--paper-white", "19", "--solid", "24", "--filter-mode", "Black",
                                 "--tint", "20=25", "--tint", "21=50", "--tint=22=75"});
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    EXPECT_EQ("24", table.Keyword("SOLID"));
    const std::map<std::string, double> nominal = {{"20", 25.0}, {"21", 50.0}, {"22", 75.0}};
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        const std::string id = table.Value(r, "SAMPLE_ID");
        if (nominal.count(id) == 0) {
            EXPECT_EQ("", table.Value(r, "NOMINAL")) << id;
            EXPECT_EQ("", table.Value(r, "DOT_GAIN")) << id;
            continue;
        }
        EXPECT_EQ(nominal.at(id), table.At(r, "NOMINAL"));
        EXPECT_NEAR(table.At(r, "DOT_AREA") - nominal.at(id), table.At(r, "DOT_GAIN"), 1.5e-4) << id;
    }
    EXPECT_EQ("100.0000", table.Value(table.Row("24"), "DOT_AREA"));
    // Missing numbers: "-" in the table, null in JSON.
    const Strings lines = Lines(Qvi({"density", kChart, "--paper-white", "19", "--solid", "24", "--filter-mode",
                                     "Black", "--tint", "20=25", "--format", "table"})
                                    .out);
    ASSERT_EQ(25u, lines.size());
    EXPECT_EQ("-", Cells(lines[1]).back());
    const Json json = ParseJson(Qvi({"density", kChart, "--paper-white", "19", "--solid", "24", "--filter-mode",
                                     "Black", "--tint", "20=25", "--format", "json"})
                                    .out);
    EXPECT_EQ(Json::Kind::Null, json["rows"].items.at(0)["DOT_GAIN"].kind);
    EXPECT_EQ(Json::Kind::Number, json["rows"].items.at(19)["DOT_GAIN"].kind);
}

TEST_F(QviDensity, WrongSolidOrTint)
{
    EXPECT_FAILURE(Qvi({"density", kChart, "--paper-white", "19", "--tint", "20=25"}), 2);
    EXPECT_FAILURE(Qvi({"density", kChart, "--paper-white", "19", "--solid", "99"}), 2);
    EXPECT_FAILURE(Qvi({"density", kChart, "--paper-white", "19", "--solid", "24", "--tint", "98=25"}), 2);
    EXPECT_FAILURE(Qvi({"density", kChart, "--paper-white", "97"}), 2);
    EXPECT_FAILURE(Qvi({"density", kChart, "--paper-white", "19", "--solid", "24", "--tint", "20=half"}), 2);
}

// ========================================================== standard input

using QviStandardInput = QviTest;

TEST_F(QviStandardInput, ColorFromStandardInput)
{
    const Outcome fromFile = Qvi({"color", kChart});
    const Outcome fromInput = Qvi({"color", "-"}, dir, SamplePath(kChart));
    EXPECT_SUCCESS(fromInput);
    std::string expected = fromFile.out;
    const std::string descriptor = "colour values of " + kChart;
    expected.replace(expected.find(descriptor), descriptor.size(), "colour values of <stdin>");
    EXPECT_EQ(expected, fromInput.out);
}

TEST_F(QviStandardInput, LongFileFromStandardInput)
{
    const Outcome fromFile = Qvi({"density", kChips, "--white-base", "Absolute", "--format", "csv"});
    const Outcome fromInput = Qvi({"density", "-", "--white-base", "Absolute", "--format", "csv"}, dir,
                                  SamplePath(kChips));
    EXPECT_SUCCESS(fromInput);
    EXPECT_EQ(fromFile.out, fromInput.out);
    EXPECT_EQ(1270u, Lines(fromInput.out).size());
}

TEST_F(QviStandardInput, SamplesOfDeltaEFromStandardInput)
{
    const Outcome outcome = Qvi({"delta-e", SamplePath(kChart), "-"}, dir, SamplePath(kOtherChart));
    EXPECT_SUCCESS(outcome);
    const Table table = ParseCgats(outcome.out);
    const Table fromFile = ParseCgats(Qvi({"delta-e", kChart, kOtherChart}).out);
    EXPECT_EQ(fromFile.rows, table.rows);
    EXPECT_TRUE(Contains(table.Keyword("DESCRIPTOR"), "<stdin>"));
}

TEST_F(QviStandardInput, BrokenStandardInput)
{
    const std::string letter = Put("letter.txt", "Dear colleague, nothing to measure today.\n");
    const Outcome outcome = Qvi({"color", "-"}, dir, letter);
    EXPECT_FAILURE(outcome, 2);
    EXPECT_TRUE(StartsWith(outcome.err, "qvi: <stdin>:1: not a CGATS file")) << outcome;
    const Outcome empty = Qvi({"color", "-"}, dir, "/dev/null");
    EXPECT_FAILURE(empty, 2);
    EXPECT_EQ("qvi: <stdin>: standard input is empty (give a file name, or pipe a CGATS file in)\n", empty.err);
}

// ========================================================= pinned outputs

// These expected files pin qvi's output byte for byte. They are not
// independently computed values: they were written once by running qvi
// itself, in data/samples with the bare file names (the DESCRIPTOR keyword
// holds the path as given), and they guard against any unintended change of
// the output. When a change is intended, write them anew with the same
// command lines and review the difference.
struct Pinned {
    const char* name;
    const char* expected;
    Strings arguments;
};

void PrintTo(const Pinned& pinned, std::ostream* stream)
{
    *stream << pinned.expected;
}

class QviPinnedOutput : public testing::TestWithParam<Pinned> {};

TEST_P(QviPinnedOutput, IsByteIdentical)
{
    const std::string expected = ReadFile(kExpected + "/" + GetParam().expected);
    ASSERT_FALSE(expected.empty()) << GetParam().expected;
    const Outcome outcome = Qvi(GetParam().arguments, kSamples);
    EXPECT_SUCCESS(outcome);
    EXPECT_EQ(expected, outcome.out);
    if (std::string(GetParam().expected).find(".cgats") != std::string::npos) {
        ParseCgats(outcome.out);
    }
}

INSTANTIATE_TEST_SUITE_P(
    QviSamples, QviPinnedOutput,
    testing::Values(Pinned{"ColorD50", "color_chart24_babelcolor_avg_D50.cgats",
                           {"color", "chart24_babelcolor_avg.cgats", "--illuminant", "D50"}},
                    Pinned{"ColorD65", "color_chart24_babelcolor_avg_D65.cgats",
                           {"color", "chart24_babelcolor_avg.cgats", "--illuminant", "D65"}},
                    Pinned{"DeltaE", "delta-e_chart24_ohta_against_chart24_babelcolor_avg.cgats",
                           {"delta-e", "chart24_babelcolor_avg.cgats", "chart24_ohta.cgats"}},
                    Pinned{"Density", "density_chart24_babelcolor_avg_paper_white_19.cgats",
                           {"density", "chart24_babelcolor_avg.cgats", "--paper-white", "19"}},
                    Pinned{"ColorMunsellLCh", "color_munsell_matt_1269_LCh_D65_10.cgats",
                           {"color", "munsell_matt_1269.cgats", "--space", "CIELCh", "--illuminant", "D65",
                            "--observer", "10"}},
                    Pinned{"ColorXYZCsv", "color_it8_ektachrome_XYZ_F11.csv",
                           {"color", "it8_7-1_faust_E131102_ektachrome.cgats", "--space", "CIEXYZ",
                            "--illuminant", "F11", "--format", "csv"}},
                    Pinned{"ColorLuvOnPaper", "color_it8_fujichrome_Luv_paper_white_265.cgats",
                           {"color", "it8_7-1_faust_N130501_fujichrome.cgats", "--space", "CIELuv",
                            "--paper-white", "265"}},
                    Pinned{"DeltaECMCJson", "delta-e_it8_fujichrome_against_ektachrome_CMC.json",
                           {"delta-e", "it8_7-1_faust_E131102_ektachrome.cgats",
                            "it8_7-1_faust_N130501_fujichrome.cgats", "--formula", "CMC", "--cmc", "2:1",
                            "--tolerance", "5", "--format", "json"}},
                    Pinned{"DensityTable", "density_it8_ektachrome_paper_white_265.txt",
                           {"density", "it8_7-1_faust_E131102_ektachrome.cgats", "--paper-white", "265",
                            "--format", "table"}},
                    Pinned{"ColorTemperature", "cct_illuminants_cie_spd.cgats",
                           {"cct", "illuminants_cie_spd.cgats"}},
                    Pinned{"Spectrum", "spectrum_62_18_-24.cgats", {"spectrum", "62", "18", "-24"}}),
    [](const testing::TestParamInfo<Pinned>& info) { return std::string(info.param.name); });

} // namespace

// ===================================================================== progress

using QviProgress = QviTest;

// A file of more than 8 MB: 30,000 samples of 36 values.
std::string LargeFile()
{
    std::string text = "CGATS.17\nNUMBER_OF_FIELDS\t38\nBEGIN_DATA_FORMAT\nSAMPLE_ID\tSAMPLE_NAME";
    for (int wavelength = 380; wavelength <= 730; wavelength += 10) {
        text += "\tSPECTRAL_NM" + std::to_string(wavelength);
    }
    text += "\nEND_DATA_FORMAT\nNUMBER_OF_SETS\t30000\nBEGIN_DATA\n";
    for (int sample = 1; sample <= 30000; ++sample) {
        text += std::to_string(sample) + "\t\"sample number " + std::to_string(sample) + "\"";
        for (int point = 0; point < 36; ++point) {
            text += "\t0.2" + std::to_string(100000 + (sample * 37 + point * 11) % 900000);
        }
        text += "\n";
    }
    return text + "END_DATA\n";
}

TEST_F(QviProgress, LargeInputShowsProgressOnATerminal)
{
    const std::string file = Put("large.cgats", LargeFile());
    ASSERT_GT(fs::file_size(file), 8u * 1024 * 1024);
    const Outcome outcome = QviOnTerminal({"color", file, "--format", "csv"}, dir);
    EXPECT_EQ(0, outcome.status) << outcome;
    // Every 10,000 samples of the one reading, then the line is cleared.
    EXPECT_NE(std::string::npos, outcome.err.find("qvi: computing " + file + ": 30000 samples")) << outcome;
    EXPECT_EQ(std::string::npos, outcome.err.find("qvi: checking")) << outcome;
    EXPECT_NE(std::string::npos, outcome.err.find("\033[K")) << outcome;
    // The results are not touched by it.
    EXPECT_EQ(30001u, Lines(outcome.out).size());
}

TEST_F(QviProgress, BothPassesShowProgressWhenAPaperWhiteIsNamed)
{
    const std::string file = Put("large.cgats", LargeFile());
    const Outcome outcome = QviOnTerminal({"color", file, "--format", "csv", "--paper-white", "29999"}, dir);
    EXPECT_EQ(0, outcome.status) << outcome;
    EXPECT_NE(std::string::npos, outcome.err.find("qvi: checking " + file + ": 30000 samples")) << outcome;
    EXPECT_NE(std::string::npos, outcome.err.find("qvi: computing " + file + ": 30000 samples")) << outcome;
    EXPECT_EQ(30001u, Lines(outcome.out).size());
}

TEST_F(QviProgress, NoProgressWhenStandardErrorIsAFile)
{
    const std::string file = Put("large.cgats", LargeFile());
    const Outcome outcome = Qvi({"color", file, "--format", "csv"}, dir);
    EXPECT_SUCCESS(outcome);
    EXPECT_EQ(30001u, Lines(outcome.out).size());
}

TEST_F(QviProgress, NoProgressForSmallInputOnATerminal)
{
    const Outcome outcome = QviOnTerminal({"color", SamplePath(kChart), "--quiet"}, dir);
    EXPECT_EQ(0, outcome.status) << outcome;
    EXPECT_EQ("", outcome.err);
}

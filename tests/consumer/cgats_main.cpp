#include <cgats/cgats.h>

#include <cstdio>
#include <sstream>
#include <string>

// Reads a small CGATS file from memory, as an application that links
// QVIManager::Cgats does with its own files.
int main()
{
    std::istringstream text(
        "CGATS.17\n"
        "ORIGINATOR\t\"consumer\"\n"
        "NUMBER_OF_FIELDS\t3\n"
        "BEGIN_DATA_FORMAT\n"
        "SAMPLE_ID\tSAMPLE_NAME\tLAB_L\n"
        "END_DATA_FORMAT\n"
        "NUMBER_OF_SETS\t2\n"
        "BEGIN_DATA\n"
        "1\t\"dark skin\"\t38.4422\n"
        "2\t\"light skin\"\t65,9474\n"
        "END_DATA\n");
    Cgats::Reader reader(text, "memory.cgats");
    if (reader.Identifier() != "CGATS.17" || reader.Keyword("ORIGINATOR") != "consumer") {
        std::printf("consumer cgats: unexpected header\n");
        return 1;
    }
    const int lightness = reader.FieldIndex("LAB_L");
    Cgats::Row row;
    if (lightness != 2 || !reader.Next(row) || row.values[1] != "dark skin" || !reader.Next(row)) {
        std::printf("consumer cgats: unexpected rows\n");
        return 1;
    }
    // A decimal comma reads as a point.
    double value = 0.0;
    if (!Cgats::ParseNumber(row.values[lightness], value) || value != 65.9474 || row.line != 10) {
        std::printf("consumer cgats: unexpected value on line %zu\n", row.line);
        return 1;
    }
    if (reader.Next(row)) {
        std::printf("consumer cgats: a row after END_DATA\n");
        return 1;
    }

    // A row with a value missing is refused with its line.
    std::istringstream broken("CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_ID\tLAB_L\nEND_DATA_FORMAT\nBEGIN_DATA\n1\n");
    try {
        Cgats::Reader shortRow(broken, "broken.cgats");
        shortRow.Next(row);
    } catch (const Cgats::Error& failure) {
        if (failure.File() != "broken.cgats" || failure.Line() != 6) {
            std::printf("consumer cgats: unexpected failure '%s'\n", failure.what());
            return 1;
        }
        std::printf("consumer cgats: ok\n");
        return 0;
    }
    std::printf("consumer cgats: no failure for a short row\n");
    return 1;
}

#ifndef QVIMANAGER_TESTS_SUPPORT_CGATS_H
#define QVIMANAGER_TESTS_SUPPORT_CGATS_H

// A small reader for the CGATS.17 sample files of data/samples: the rows of
// the data block with their SAMPLE_ID, SAMPLE_NAME and 36 spectral values.

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {

struct CgatsSample {
    int id = 0;
    std::string name;
    float values[36] = {};
};

inline std::string SampleFile(const std::string& name)
{
    return std::string(QVIMANAGER_SAMPLE_DIR) + "/" + name;
}

inline std::vector<CgatsSample> ReadCgats(const std::string& path)
{
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot open " + path);
    }
    std::vector<std::string> fields;
    std::vector<CgatsSample> samples;
    std::string line;
    bool inFormat = false;
    bool inData = false;
    while (std::getline(file, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line == "BEGIN_DATA_FORMAT") {
            inFormat = true;
            continue;
        }
        if (line == "END_DATA_FORMAT") {
            inFormat = false;
            continue;
        }
        if (line == "BEGIN_DATA") {
            inData = true;
            continue;
        }
        if (line == "END_DATA") {
            inData = false;
            continue;
        }
        if (inFormat) {
            std::istringstream words(line);
            std::string word;
            while (words >> word) {
                fields.push_back(word);
            }
            continue;
        }
        if (!inData || line.empty()) {
            continue;
        }
        // Fields are separated by one TAB; the name is quoted.
        std::vector<std::string> cells;
        std::istringstream row(line);
        std::string cell;
        while (std::getline(row, cell, '\t')) {
            cells.push_back(cell);
        }
        CgatsSample sample;
        int spectral = 0;
        for (std::size_t i = 0; i < fields.size() && i < cells.size(); ++i) {
            if (fields[i] == "SAMPLE_ID") {
                sample.id = std::stoi(cells[i]);
            } else if (fields[i] == "SAMPLE_NAME") {
                std::string name = cells[i];
                if (name.size() >= 2 && name.front() == '"' && name.back() == '"') {
                    name = name.substr(1, name.size() - 2);
                }
                sample.name = name;
            } else if (fields[i].rfind("SPECTRAL_NM", 0) == 0 && spectral < 36) {
                sample.values[spectral++] = std::stof(cells[i]);
            }
        }
        if (spectral != 36) {
            throw std::runtime_error("a row without 36 spectral values in " + path);
        }
        samples.push_back(sample);
    }
    return samples;
}

} // namespace TestSupport

#endif

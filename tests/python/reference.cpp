// The C++ side of the Python module's tests: the library called the plain
// way, one spectrum at a time, as an application (and qvi) calls it. The
// tests compare the module's arrays with these numbers bit for bit.
//
//   python_reference spectra FILE
//   python_reference color FILE [SETTING...]
//   python_reference delta-e REFERENCES SAMPLES [SETTING...]
//   python_reference density FILE [SETTING...]
//   python_reference cct FILE [SETTING...]
//   python_reference lab-to-spectrum FILE [SETTING...]
//   python_reference time SPECTRA.f32 REPETITIONS
//
// A SETTING is KEY=VALUE, a measure condition, or one of
//   paper-white=ID      the paper white, a sample of the file
//   parameters=P1,P2,P3 the formula's parameters (0 for the default 1)
//   de2000=KL,KC,KH     CIEDE2000 of the two samples' Lab values
//   lab=1               delta-e: both sides as Lab values
//
// Each sample gives a line: its SAMPLE_ID, then each float result as the
// eight hexadecimal digits of its bits, or "refused", the library's class
// and its text. delta-e pairs the samples of the two files in order (a
// file of one sample serves all). lab-to-spectrum turns each sample's Lab
// value under the conditions back into a spectrum.
//
// time reads N x 36 float32 values (native byte order) and prints the
// shortest of REPETITIONS runs of qvi color's calculation of their Lab
// values, in seconds.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "qvimanager/cmetry/ciede2000.h"
#include "qvimanager/foundation/class_name.h"
#include "qvimanager/qvimanager.h"
#include "tools/qvi/input.h"

namespace {

using Utilities::String;

struct Settings {
    std::vector<std::pair<std::string, std::string>> conditions;
    std::string paperWhite;
    float parameters[3] = {0.0f, 0.0f, 0.0f};
    bool de2000 = false;
    bool lab = false;
};

void Parameters(const std::string& text, float (&values)[3])
{
    std::size_t start = 0;
    for (int i = 0; i < 3 && start <= text.size(); ++i) {
        const std::size_t comma = text.find(',', start);
        values[i] = std::strtof(text.substr(start, comma - start).c_str(), nullptr);
        if (comma == std::string::npos) {
            break;
        }
        start = comma + 1;
    }
}

Settings ReadSettings(int argc, char** argv, int first)
{
    Settings settings;
    for (int i = first; i < argc; ++i) {
        const std::string word = argv[i];
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos) {
            throw std::runtime_error("not KEY=VALUE: " + word);
        }
        const std::string key = word.substr(0, equals);
        const std::string value = word.substr(equals + 1);
        if (key == "paper-white") {
            settings.paperWhite = value;
        } else if (key == "parameters") {
            Parameters(value, settings.parameters);
        } else if (key == "de2000") {
            settings.de2000 = true;
            Parameters(value, settings.parameters);
        } else if (key == "lab") {
            settings.lab = value == "1";
        } else {
            settings.conditions.emplace_back(key, value);
        }
    }
    return settings;
}

CMetry::QVMeasureConditions Conditions(const Settings& settings)
{
    CMetry::QVMeasureConditions conditions;
    for (const auto& [key, value] : settings.conditions) {
        conditions.SetMeasureCondition(String(key.c_str()), String(value.c_str()));
    }
    return conditions;
}

std::vector<Qvi::Sample> ReadAll(const std::string& path)
{
    Qvi::MeasurementFile file(path);
    file.Survey({}, Qvi::Scale{}, false);
    std::vector<Qvi::Sample> samples;
    file.ForEach([&](const Qvi::Sample& sample) { samples.push_back(sample); }, false);
    return samples;
}

CMetry::QVSpectrum SpectrumOf(const Qvi::Sample& sample, const CMetry::QVMeasureConditions& conditions)
{
    float values[36];
    std::copy(sample.values.begin(), sample.values.end(), values);
    return CMetry::QVSpectrum(values, conditions);
}

std::string Bits(float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    char text[16];
    std::snprintf(text, sizeof text, "%08x", bits);
    return text;
}

std::string ClassName(const Utilities::Exception& failure)
{
    const std::string name = Utilities::GetRuntimeClassName(typeid(failure)).GetCharPointer();
    const std::size_t colon = name.rfind("::");
    return colon == std::string::npos ? name : name.substr(colon + 2);
}

// One line per sample: the results of `calculate`, or the refusal.
template <typename Calculate>
void Line(const std::string& id, Calculate calculate)
{
    std::cout << id;
    try {
        const std::vector<float> results = calculate();
        for (float value : results) {
            std::cout << '\t' << Bits(value);
        }
    } catch (const Utilities::Exception& failure) {
        std::cout << "\trefused\t" << ClassName(failure) << '\t' << failure.GetExceptionText().GetCharPointer();
    }
    std::cout << '\n';
}

const Qvi::Sample& Find(const std::vector<Qvi::Sample>& samples, const std::string& id)
{
    for (const Qvi::Sample& sample : samples) {
        if (sample.id == id) {
            return sample;
        }
    }
    throw std::runtime_error("no sample " + id);
}

int Time(const std::string& path, int repetitions)
{
    std::ifstream input(path, std::ios::binary);
    std::vector<float> values;
    float spectrum[36];
    while (input.read(reinterpret_cast<char*>(spectrum), sizeof spectrum)) {
        values.insert(values.end(), std::begin(spectrum), std::end(spectrum));
    }
    const std::size_t count = values.size() / 36;
    CMetry::QVMeasureConditions conditions;
    std::vector<float> lab(count * 3);
    double shortest = 1e300;
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        const auto start = std::chrono::steady_clock::now();
        // qvi color's calculation of a sample: its spectrum under the run's
        // conditions (copied from the sample's values), the library's
        // colour value, each component checked.
        for (std::size_t i = 0; i < count; ++i) {
            const CMetry::QVColorVector vector = [&] {
                try {
                    float copy[36];
                    std::copy(values.begin() + static_cast<std::ptrdiff_t>(i * 36),
                              values.begin() + static_cast<std::ptrdiff_t>(i * 36 + 36), copy);
                    return CMetry::CMetryService::GetVector(CMetry::QVSpectrum(copy, conditions), conditions);
                } catch (const Utilities::Exception& failure) {
                    throw std::runtime_error(failure.GetExceptionText().GetCharPointer());
                }
            }();
            for (unsigned short axis = 0; axis < 3; ++axis) {
                if (!std::isfinite(vector[axis])) {
                    throw std::runtime_error("not finite");
                }
                lab[i * 3 + axis] = vector[axis];
            }
        }
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        shortest = std::min(shortest, seconds);
    }
    std::cout << shortest << '\n';
    return 0;
}

int Run(int argc, char** argv)
{
    if (argc < 3) {
        throw std::runtime_error("usage: python_reference COMMAND FILE [SETTING...]");
    }
    const std::string command = argv[1];
    if (command == "time") {
        return Time(argv[2], argc > 3 ? std::atoi(argv[3]) : 3);
    }
    const std::vector<Qvi::Sample> samples = ReadAll(argv[2]);
    if (command == "spectra") {
        for (const Qvi::Sample& sample : samples) {
            Line(sample.id, [&] { return std::vector<float>(sample.values.begin(), sample.values.end()); });
        }
        return 0;
    }
    if (command == "delta-e") {
        if (argc < 4) {
            throw std::runtime_error("delta-e takes two files");
        }
        const std::vector<Qvi::Sample> others = ReadAll(argv[3]);
        const Settings settings = ReadSettings(argc, argv, 4);
        const CMetry::QVMeasureConditions conditions = Conditions(settings);
        CMetry::QVMeasureConditions labConditions = conditions;
        labConditions.SetMeasureCondition(String("ColorSpaceDescription.Type"), String("CIELab"));
        if (!settings.paperWhite.empty()) {
            CMetry::DensityService::SetPaperWhite(SpectrumOf(Find(samples, settings.paperWhite), conditions));
        }
        const std::size_t count = std::max(samples.size(), others.size());
        for (std::size_t i = 0; i < count; ++i) {
            const Qvi::Sample& reference = samples[samples.size() == 1 ? 0 : i];
            const Qvi::Sample& sample = others[others.size() == 1 ? 0 : i];
            Line(sample.id, [&] {
                if (!settings.de2000 && !settings.lab) {
                    return std::vector<float>{CMetry::CMetryService::GetDeltaE(
                        SpectrumOf(reference, conditions), SpectrumOf(sample, conditions), conditions,
                        settings.parameters[0], settings.parameters[1], settings.parameters[2])};
                }
                const CMetry::QVColorVector first =
                    CMetry::CMetryService::GetVector(SpectrumOf(reference, labConditions), labConditions);
                const CMetry::QVColorVector second =
                    CMetry::CMetryService::GetVector(SpectrumOf(sample, labConditions), labConditions);
                if (settings.de2000) {
                    return std::vector<float>{CMetry::DeltaE2000(first, second, settings.parameters[0],
                                                                 settings.parameters[1], settings.parameters[2])};
                }
                return std::vector<float>{CMetry::CMetryService::GetDeltaE(
                    first, second, settings.parameters[0], settings.parameters[1], settings.parameters[2])};
            });
        }
        return 0;
    }
    const Settings settings = ReadSettings(argc, argv, 3);
    const CMetry::QVMeasureConditions conditions = Conditions(settings);
    if (!settings.paperWhite.empty()) {
        CMetry::DensityService::SetPaperWhite(SpectrumOf(Find(samples, settings.paperWhite), conditions));
    }
    for (const Qvi::Sample& sample : samples) {
        if (command == "color") {
            Line(sample.id, [&] {
                const CMetry::QVColorVector vector =
                    CMetry::CMetryService::GetVector(SpectrumOf(sample, conditions), conditions);
                return std::vector<float>{vector[0], vector[1], vector[2]};
            });
        } else if (command == "density") {
            Line(sample.id, [&] {
                const CMetry::QVSpectrum spectrum = SpectrumOf(sample, conditions);
                const float density = CMetry::DensityService::GetDensity(spectrum, conditions);
                const std::string filter = CMetry::DensityService::GetDensityFilterName(spectrum, conditions)
                                               .GetCharPointer();
                const char* const names[] = {"Black", "Cyan", "Magenta", "Yellow"};
                const auto index = std::find(std::begin(names), std::end(names), filter) - std::begin(names);
                return std::vector<float>{density, static_cast<float>(index)};
            });
        } else if (command == "cct") {
            Line(sample.id, [&] {
                return std::vector<float>{CMetry::CMetryService::GetColorTemperature(SpectrumOf(sample, conditions))};
            });
        } else if (command == "lab-to-spectrum") {
            Line(sample.id, [&] {
                CMetry::QVMeasureConditions lab = conditions;
                lab.SetMeasureCondition(String("ColorSpaceDescription.Type"), String("CIELab"));
                const CMetry::QVColorVector vector = CMetry::CMetryService::GetVector(SpectrumOf(sample, lab), lab);
                const CMetry::QVSpectrum spectrum = CMetry::CMetryService::GetSpectrum(
                    CMetry::QVColorVector(vector[0], vector[1], vector[2], lab));
                std::vector<float> values{vector[0], vector[1], vector[2]};
                for (long point = 0; point < 36; ++point) {
                    values.push_back(spectrum[point]);
                }
                return values;
            });
        } else {
            throw std::runtime_error("unknown command " + command);
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    Qvi::SetQuiet(true);
    try {
        return Run(argc, argv);
    } catch (const std::exception& failure) {
        std::cerr << "python_reference: " << failure.what() << '\n';
    } catch (const Utilities::Exception& failure) {
        std::cerr << "python_reference: " << failure.GetExceptionText().GetCharPointer() << '\n';
    }
    return 2;
}

#include "plugins/simulator/simulator_configuration.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace Simulator {

namespace fs = std::filesystem;

namespace {

const char* const kDefaultName = "simulated_instruments.conf";
const char* const kVariable = "QVIMANAGER_SIMULATOR";

std::string Located(const std::string& file, std::size_t line, const std::string& text)
{
    return line > 0 ? file + ":" + std::to_string(line) + ": " + text : file + ": " + text;
}

std::string Trim(const std::string& text)
{
    const char* const blanks = " \t\r\n";
    const std::string::size_type first = text.find_first_not_of(blanks);
    if (first == std::string::npos) {
        return std::string();
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return text;
}

bool IsSerial(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char character) {
        return std::isalnum(character) != 0 || character == '-' || character == '_' || character == '.';
    });
}

bool IsDigits(const std::string& text)
{
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](unsigned char character) { return std::isdigit(character) != 0; });
}

// The keys of a device section, the required ones first.
const char* const kKeys[] = {"serial", "name", "transport", "port", "baud", "spectra", "scale", "plugged", "control"};
const std::size_t kRequiredKeys = 6;

std::string KnownKeys()
{
    std::string text;
    for (const char* key : kKeys) {
        text += (text.empty() ? "" : ", ") + std::string(key);
    }
    return text;
}

// One section as written: each key with its value and line.
struct Section {
    std::size_t line = 0;
    std::map<std::string, std::pair<std::string, std::size_t>> values;
};

std::string Resolved(const fs::path& folder, const std::string& path)
{
    const fs::path given(path);
    return (given.is_absolute() ? given : folder / given).lexically_normal().string();
}

Device MakeDevice(const std::string& file, const fs::path& folder, const Section& section)
{
    for (std::size_t key = 0; key < kRequiredKeys; ++key) {
        if (section.values.count(kKeys[key]) == 0) {
            throw Error(file, section.line, "the [device] section lacks \"" + std::string(kKeys[key]) + "\"");
        }
    }
    const auto value = [&](const char* key) { return section.values.at(key).first; };
    const auto lineOf = [&](const char* key) { return section.values.at(key).second; };
    Device device;
    device.line = section.line;
    device.serial = value("serial");
    if (!IsSerial(device.serial)) {
        throw Error(file, lineOf("serial"),
                    "the serial number \"" + device.serial +
                        "\" may hold letters, digits, \"-\", \"_\" and \".\" only");
    }
    device.name = value("name");
    device.transport = value("transport");
    device.port = value("port");
    device.baudRate = value("baud");
    if (!IsDigits(device.baudRate) || device.baudRate.size() > 9) {
        throw Error(file, lineOf("baud"), "the baud rate \"" + device.baudRate + "\" is not a number of baud");
    }
    device.spectra = Resolved(folder, value("spectra"));
    if (section.values.count("scale") > 0) {
        const std::string scale = Lower(value("scale"));
        if (scale == "1") {
            device.scale = 1.0;
        } else if (scale == "100") {
            device.scale = 100.0;
        } else if (scale != "auto") {
            throw Error(file, lineOf("scale"), "scale is \"auto\", \"1\" or \"100\", not \"" + value("scale") + "\"");
        }
    }
    if (section.values.count("plugged") > 0) {
        const std::string plugged = Lower(value("plugged"));
        if (plugged != "yes" && plugged != "no") {
            throw Error(file, lineOf("plugged"), "plugged is \"yes\" or \"no\", not \"" + value("plugged") + "\"");
        }
        device.plugged = plugged == "yes";
    }
    device.control = Resolved(folder, section.values.count("control") > 0 ? value("control")
                                                                          : device.serial + ".control");
    return device;
}

// The folder of the file that holds this code: the plug-in's.
fs::path PluginFolder()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&ConfigurationPath), &info) == 0 || info.dli_fname == nullptr) {
        throw Error(kDefaultName, 0, "the folder of the plug-in cannot be found; set " + std::string(kVariable));
    }
    return fs::absolute(fs::path(info.dli_fname)).parent_path();
}

} // namespace

Error::Error(const std::string& file, std::size_t line, const std::string& text)
    : std::runtime_error(Located(file, line, text))
{
}

std::string ConfigurationPath()
{
    const char* const named = std::getenv(kVariable);
    if (named != nullptr && *named != '\0') {
        return fs::absolute(fs::path(named)).lexically_normal().string();
    }
    // Made once: the working directory may change, the plug-in stays put.
    static const std::string beside = (PluginFolder() / kDefaultName).lexically_normal().string();
    return beside;
}

Configuration ReadConfiguration(const std::string& path)
{
    Configuration configuration;
    configuration.path = path;
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) {
        throw Error(path, 0, "is a folder, not a configuration file");
    }
    // A FIFO or a device could block the driver or never end.
    if (fs::exists(path, ignored) && !fs::is_regular_file(path, ignored)) {
        throw Error(path, 0, "is not a regular file");
    }
    std::ifstream input(path, std::ios::binary);
    if (!input) {
        throw Error(path, 0, "cannot read the configuration: " + std::string(std::strerror(errno)));
    }
    const fs::path folder = fs::path(path).parent_path();
    std::vector<Section> sections;
    std::string text;
    std::size_t number = 0;
    while (std::getline(input, text)) {
        ++number;
        if (number == 1 && text.rfind("\xEF\xBB\xBF", 0) == 0) {
            text.erase(0, 3);
        }
        const std::string line = Trim(text);
        if (line.empty() || line[0] == '#') {
            continue;
        }
        if (line[0] == '[') {
            if (line.back() != ']') {
                throw Error(path, number, "a section heading ends with \"]\": " + line);
            }
            const std::string name = Trim(line.substr(1, line.size() - 2));
            if (Lower(name) != "device") {
                throw Error(path, number, "unknown section [" + name + "]: each device has a [device] section");
            }
            sections.emplace_back();
            sections.back().line = number;
            continue;
        }
        const std::string::size_type equals = line.find('=');
        if (equals == std::string::npos) {
            throw Error(path, number, "expected \"key = value\" or a [device] heading, not \"" + line + "\"");
        }
        const std::string key = Lower(Trim(line.substr(0, equals)));
        const std::string value = Trim(line.substr(equals + 1));
        if (sections.empty()) {
            throw Error(path, number, "\"" + key + "\" stands before the first [device] section");
        }
        if (std::find_if(std::begin(kKeys), std::end(kKeys), [&](const char* known) { return key == known; }) ==
            std::end(kKeys)) {
            throw Error(path, number, "unknown key \"" + key + "\" (the keys are " + KnownKeys() + ")");
        }
        Section& section = sections.back();
        const auto given = section.values.find(key);
        if (given != section.values.end()) {
            throw Error(path, number,
                        "\"" + key + "\" is given twice in this section (first on line " +
                            std::to_string(given->second.second) + ")");
        }
        if (value.empty()) {
            throw Error(path, number, "\"" + key + "\" has no value");
        }
        section.values[key] = {value, number};
    }
    if (input.bad()) {
        throw Error(path, 0, "cannot read the configuration: " + std::string(std::strerror(errno)));
    }
    if (sections.empty()) {
        throw Error(path, 0, "names no device: give each device a [device] section");
    }
    for (const Section& section : sections) {
        Device device = MakeDevice(path, folder, section);
        if (const Device* twin = FindBySerial(configuration, device.serial)) {
            throw Error(path, section.values.at("serial").second,
                        "the serial number " + device.serial + " is already the one of the device on line " +
                            std::to_string(twin->line));
        }
        configuration.devices.push_back(device);
    }
    return configuration;
}

const Device* FindBySerial(const Configuration& configuration, const std::string& serial)
{
    for (const Device& device : configuration.devices) {
        if (device.serial == serial) {
            return &device;
        }
    }
    return nullptr;
}

const Device* FindByNameAndSerial(const Configuration& configuration, const std::string& nameAndSerial)
{
    for (const Device& device : configuration.devices) {
        if (device.name + "_" + device.serial == nameAndSerial) {
            return &device;
        }
    }
    return nullptr;
}

ControlLines ReadControl(const std::string& path, std::size_t offset)
{
    ControlLines result;
    // Only a regular file is read: a FIFO or a device could block the
    // driver or never end, and counts as missing.
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) {
        result.restarted = offset > 0;
        result.end = 0;
        return result;
    }
    std::ifstream input(path, std::ios::binary);
    std::string content;
    if (input) {
        std::ostringstream whole;
        whole << input.rdbuf();
        content = whole.str();
    }
    // Read whole and cut here: the file is small, and a size taken apart
    // from the reading could disagree with it.
    std::size_t start = offset;
    if (content.size() < offset) {
        result.restarted = true;
        start = 0;
    }
    const std::string::size_type lastEnd = content.rfind('\n');
    if (lastEnd == std::string::npos || lastEnd + 1 <= start) {
        result.end = start;
        return result;
    }
    result.end = lastEnd + 1;
    std::istringstream lines(content.substr(start, result.end - start));
    std::string line;
    while (std::getline(lines, line)) {
        result.lines.push_back(line);
    }
    return result;
}

Command ParseCommand(const std::string& line)
{
    std::istringstream words(line);
    std::string word;
    Command command;
    if (!(words >> word) || word[0] == '#') {
        return command;
    }
    std::string argument;
    const bool hasArgument = static_cast<bool>(words >> argument);
    std::string more;
    if (words >> more) {
        return command;
    }
    if (word == "press") {
        if (hasArgument) {
            if (!IsDigits(argument) || argument.size() > 9 || std::atol(argument.c_str()) < 1) {
                return command;
            }
            command.button = std::atol(argument.c_str());
        }
        command.kind = Command::Press;
    } else if (word == "unplug" && !hasArgument) {
        command.kind = Command::Unplug;
    } else if (word == "plug" && !hasArgument) {
        command.kind = Command::Plug;
    }
    return command;
}

bool PluggedAfter(const Device& device, const std::vector<std::string>& lines)
{
    bool plugged = device.plugged;
    for (const std::string& line : lines) {
        const Command command = ParseCommand(line);
        if (command.kind == Command::Unplug) {
            plugged = false;
        } else if (command.kind == Command::Plug) {
            plugged = true;
        }
    }
    return plugged;
}

} // namespace Simulator

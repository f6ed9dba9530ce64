#ifndef QVIMANAGER_TOOLS_QVI_OPTIONS_H
#define QVIMANAGER_TOOLS_QVI_OPTIONS_H

// qvi's command line: the commands, their options and help texts.

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/qvi/input.h"
#include "tools/qvi/output.h"

namespace Qvi {

// A wrong command line: its text on standard error, status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A measure condition from the command line, with the words that gave it
// ("--illuminant F7", "--condition Colorimetric.Observer=TenDegree").
struct ConditionOption {
    std::string key;
    std::string value;
    std::string origin;
};

struct Options {
    std::string command;
    std::vector<std::string> arguments;
    Format format = Format::Cgats;
    // "" is standard output.
    std::string output;
    std::string summary;
    int decimals = 4;
    Scale scale;
    bool quiet = false;
    std::vector<ConditionOption> conditions;
    std::string paperWhite;
    std::string solid;
    std::vector<std::pair<std::string, float>> tints;
    std::string reference;
    // --formula 2000: CIEDE2000, outside the library's formula keys.
    bool de2000 = false;
    // --cmc l:c and --k94 kL,kC,kH (0 stands for the library's default 1).
    float p1 = 0.0f;
    float p2 = 0.0f;
    float p3 = 0.0f;
    // --k00 kL:kC:kH.
    float k00[3] = {1.0f, 1.0f, 1.0f};
    double tolerance = 2.0;
    // measure: the device key ("" the recent instrument), the number of
    // readings, one per button press.
    std::string device;
    long count = 1;
    bool waitButton = false;
    bool formatGiven = false;
    bool help = false;
    bool version = false;
};

// Parses the words after the program name; raises UsageError. Help (--help,
// -h, `qvi help [COMMAND]`) wins over everything but an unparsable value.
Options ParseArguments(int argc, char** argv);

const std::string& GeneralHelp();
// The help of a command; null for an unknown command.
const std::string* CommandHelp(const std::string& command);

// How "Dxx, Temperature:K" and the like are written, for help and hints.
extern const char* const kIlluminationValues;

} // namespace Qvi

#endif

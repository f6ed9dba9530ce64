#ifndef QVIMANAGER_PLUGINS_SIMULATOR_SIMULATOR_CONFIGURATION_H
#define QVIMANAGER_PLUGINS_SIMULATOR_SIMULATOR_CONFIGURATION_H

// The devices of the simulated spectrophotometer and their control files.
//
// The configuration file. The environment variable QVIMANAGER_SIMULATOR
// names it (a relative name is taken from the working directory); when it
// is unset or empty, it is "simulated_instruments.conf" in the folder that
// holds the plug-in file. The file has one section per device:
//
//     # a comment
//     [device]
//     serial = SIM-0001
//     name = Simulated Spectrophotometer
//     transport = Simulated
//     port = sim-1
//     baud = 115200
//     spectra = ../samples/chart24_babelcolor_avg.cgats
//     scale = auto
//     plugged = yes
//     control = SIM-0001.control
//
// Blank lines and lines whose first non-blank character is "#" are
// skipped; blanks around section names, keys and values are dropped; keys
// and the section name "device" are taken without regard to case. Every
// key but scale, plugged and control is required in each section and may
// be given once. serial holds letters, digits, "-", "_" and "." only, and
// no two devices share one; baud holds digits only; scale is "auto", "1"
// or "100"; plugged is "yes" or "no". Relative paths (spectra, control)
// are taken from the folder of the configuration file; control defaults to
// "<serial>.control" there. A file without any device is refused too.
//
// The control file. A test or a user appends lines to it, each ended by a
// newline; the driver takes in the complete lines once each, in order:
//
//     press [N]   button N (1 when omitted) is pressed: the event "Button"
//                 with the value N, while the device is plugged in and
//                 someone listens to "Button"
//     unplug      the device is unplugged: the event "Connection" with the
//                 value "disconnected" when it was plugged in
//     plug        the device is plugged in: the event "Connection" with the
//                 value "connected" when it was not
//
// Blank lines, "#" comments and any other line are skipped. The state of
// the plug is the configuration's "plugged", changed by each "plug" and
// "unplug" of the whole file in order: it outlives the process that read
// it. A file that became shorter than what was taken in (truncated or
// removed) is read from its start again, and the device is back in its
// configured state. A missing file is an empty one, and so is one that is
// not a regular file (a FIFO or a device could block the driver).
//
// Every failure raises Simulator::Error with the file and line ("<file>:
// <line>: <text>", or "<file>: <text>" for the file as a whole).

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace Simulator {

class Error : public std::runtime_error {
public:
    Error(const std::string& file, std::size_t line, const std::string& text);
};

struct Device {
    std::string serial;
    std::string name;
    std::string transport;
    std::string port;
    std::string baudRate;
    // Absolute paths.
    std::string spectra;
    std::string control;
    // 0: decided from the file; otherwise the divisor 1 or 100.
    double scale = 0.0;
    bool plugged = true;
    // The line of the device's section.
    std::size_t line = 0;
};

struct Configuration {
    // Absolute.
    std::string path;
    std::vector<Device> devices;
};

// The configuration file's path as the environment or the plug-in's folder
// gives it, absolute.
std::string ConfigurationPath();

// Reads and checks the whole file.
Configuration ReadConfiguration(const std::string& path);

// The device whose serial number is `serial`, or null.
const Device* FindBySerial(const Configuration& configuration, const std::string& serial);
// The device whose name, "_" and serial number give `nameAndSerial` (the
// form in which the instrument manager keeps the recently used device), or
// null.
const Device* FindByNameAndSerial(const Configuration& configuration, const std::string& nameAndSerial);

// What the control file says, from its start or from `offset` on.
struct ControlLines {
    // The complete lines, without their line ends.
    std::vector<std::string> lines;
    // Where the next read starts: behind the last complete line.
    std::size_t end = 0;
    // The file is shorter than `offset` (or gone): read from its start.
    bool restarted = false;
};
ControlLines ReadControl(const std::string& path, std::size_t offset);

// One line of the control file.
struct Command {
    enum Kind { None, Press, Unplug, Plug };
    Kind kind = None;
    long button = 1;
};
Command ParseCommand(const std::string& line);

// The state of the plug after the configuration and every "plug" and
// "unplug" of `lines`.
bool PluggedAfter(const Device& device, const std::vector<std::string>& lines);

} // namespace Simulator

#endif

// The simulated instrument's files: its configuration, a device's control
// file and the spectra it reads, each arbitrary. What the reader accepts
// must keep the rules it states (serial numbers of letters, digits, "-",
// "_" and "." and unique, baud rates of digits, scale 0, 1 or 100, absolute
// paths); control lines are whole lines; spectra are finite floats on 36
// points. Refusals are Simulator::Error.
//
// Input: the configuration, then optionally "\n%%\n" and the control file,
// then "\n%%\n" and the spectra file. They are written as sim.conf,
// dev.control and dev.cgats in a scratch folder of the process; a device
// reads its control and spectra files only when they are these.

#include "fuzz/fuzz_input.h"

#include "plugins/simulator/simulator_configuration.h"
#include "plugins/simulator/simulator_spectra.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Fuzz::Check;

// The process's scratch folder, removed when the process ends.
class ScratchFolder {
public:
    ScratchFolder()
    {
        const char* scratch = std::getenv("QVIMANAGER_FUZZ_SCRATCH");
        path = fs::path(scratch != nullptr && *scratch != '\0' ? scratch : "/tmp") /
               ("simulator-fuzz-" + std::to_string(getpid()));
        fs::create_directories(path);
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    fs::path path;
};

const fs::path& Folder()
{
    static const ScratchFolder folder;
    return folder.path;
}

void Write(const fs::path& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
}

// The text up to the next "\n%%\n" line, taken off the front of `rest`.
std::string NextFile(std::string& rest)
{
    const std::size_t parting = rest.find("\n%%\n");
    std::string file = rest.substr(0, parting);
    rest = parting == std::string::npos ? std::string() : rest.substr(parting + 4);
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string rest(reinterpret_cast<const char*>(data), size);
    const std::string configurationText = NextFile(rest);
    const std::string controlText = NextFile(rest);
    const std::string spectraText = rest;
    const fs::path configurationPath = Folder() / "sim.conf";
    const fs::path controlPath = Folder() / "dev.control";
    const fs::path spectraPath = Folder() / "dev.cgats";
    Write(configurationPath, configurationText);
    Write(controlPath, controlText);
    Write(spectraPath, spectraText);

    Simulator::Configuration configuration;
    try {
        configuration = Simulator::ReadConfiguration(configurationPath.string());
    } catch (const Simulator::Error&) {
        return 0;
    }
    Check(!configuration.devices.empty(), "a configuration without devices was taken");
    std::set<std::string> serials;
    for (const Simulator::Device& device : configuration.devices) {
        Check(!device.serial.empty() &&
                  device.serial.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.") ==
                      std::string::npos,
              "serial number \"" + device.serial + "\"");
        Check(serials.insert(device.serial).second, "two devices share " + device.serial);
        Check(!device.baudRate.empty() && device.baudRate.find_first_not_of("0123456789") == std::string::npos,
              "baud rate \"" + device.baudRate + "\"");
        Check(device.scale == 0.0 || device.scale == 1.0 || device.scale == 100.0, "scale");
        Check(fs::path(device.spectra).is_absolute() && fs::path(device.control).is_absolute(), "relative paths");
        Check(Simulator::FindBySerial(configuration, device.serial) != nullptr, "FindBySerial");
        Check(Simulator::FindByNameAndSerial(configuration, device.name + "_" + device.serial) != nullptr,
              "FindByNameAndSerial");

        if (fs::path(device.control).lexically_normal() == controlPath) {
            const std::size_t offset = controlText.empty() ? 0 : data[0] % (controlText.size() + 2);
            const Simulator::ControlLines control = Simulator::ReadControl(device.control, offset);
            Check(control.end <= controlText.size(), "control end past the file");
            for (const std::string& line : control.lines) {
                Check(line.find('\n') == std::string::npos, "a control line with a line end");
                const Simulator::Command command = Simulator::ParseCommand(line);
                Check(command.kind != Simulator::Command::Press || command.button >= 1, "button number");
            }
        }
        if (fs::path(device.spectra).lexically_normal() == spectraPath) {
            try {
                for (const Simulator::Spectrum& spectrum : Simulator::ReadSpectra(device.spectra, device.scale)) {
                    for (float value : spectrum) {
                        Check(std::isfinite(value), "a spectral value that is not finite");
                    }
                }
            } catch (const Simulator::Error&) {
            }
        }
    }
    return 0;
}

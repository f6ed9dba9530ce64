#ifndef QVIMANAGER_TOOLS_QVI_COMMANDS_H
#define QVIMANAGER_TOOLS_QVI_COMMANDS_H

// qvi's commands. Each returns its result set; failures raise UsageError or
// Cgats::Error (status 2) or LibraryError (status 1).

#include <memory>
#include <stdexcept>
#include <string>

#include "tools/qvi/options.h"
#include "tools/qvi/output.h"

namespace Qvi {

// A refusal of the library: its own text, after the option, default or
// sample that led there and what to give instead. Status 1.
class LibraryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::unique_ptr<ResultSet> Color(const Options& options);
std::unique_ptr<ResultSet> DeltaE(const Options& options);
std::unique_ptr<ResultSet> Density(const Options& options);
std::unique_ptr<ResultSet> Cct(const Options& options);
std::unique_ptr<ResultSet> SpectrumCommand(const Options& options);
std::unique_ptr<ResultSet> Conditions(const Options& options);
// The instrument drivers, their devices and the recent instrument.
std::unique_ptr<ResultSet> Instruments(const Options& options);
// Colour values of readings of an instrument.
std::unique_ptr<ResultSet> Measure(const Options& options);

} // namespace Qvi

#endif

#ifndef QVIMANAGER_PLUGINS_SIMULATOR_SIMULATOR_SPECTRA_H
#define QVIMANAGER_PLUGINS_SIMULATOR_SIMULATOR_SPECTRA_H

// The spectra a simulated device measures: every sample of a CGATS file, in
// file order, as reflectance factors 0..1 on the library's grid (36 points,
// 380 nm to 730 nm in 10 nm steps), read as qvi reads a measurement file:
//
// - The fields of the 10 nm points are used (SPECTRAL_NM400, nm400, ...).
//   The file must measure 400..700 nm without a gap; 380..390 nm and
//   710..730 nm, where many instruments stop, take the nearest measured
//   value.
// - Reflectance written as 0..100 is divided by 100 (the quotient of the
//   written number, as a double, rounded once to a float); written as 0..1
//   it is the written number rounded once to a float. Unless the device's
//   "scale" fixes it, the scale is decided on the whole file: 0..100 when
//   more than half of the samples have a value above 2, 0..1 when no value
//   exceeds 1.5; anything else is ambiguous and refused.
// - Emission data (MEAS_TYPE EMISSION), Lab files and files without
//   samples are refused, and so is a value that is no number or does not
//   fit a float.
//
// Every failure raises Simulator::Error (cgats.h's failures keep their
// file and line).

#include <array>
#include <string>
#include <vector>

namespace Simulator {

constexpr int kGridPoints = 36;
using Spectrum = std::array<float, kGridPoints>;

// `scale` 0 decides the scale from the file; 1 or 100 fixes it.
std::vector<Spectrum> ReadSpectra(const std::string& path, double scale);

} // namespace Simulator

#endif

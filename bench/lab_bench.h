#ifndef QVIMANAGER_BENCH_LAB_BENCH_H
#define QVIMANAGER_BENCH_LAB_BENCH_H

// The engine's most frequent call, Lab of a spectrum under unchanged
// conditions, and the bare arithmetic it needs (BareLabKernel, registered by
// lab_bench.cpp). Shared by the suite and the programs that compare a
// trace point filtered out with none (trace_cost_bench.cpp).

#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

namespace Bench {

// A spectrum of 36 values rising from `start` by `step`.
CMetry::QVSpectrum Ramp(float start, float step);

// Absolute colorimetry in `space` under `illumination`.
CMetry::QVMeasureConditions Conditions(const char* space, const char* illumination);

// One colour space under the same conditions call after call: the weight
// factors are built once.
void GetVectorUnchanged(benchmark::State& state, const char* space);

} // namespace Bench

#endif

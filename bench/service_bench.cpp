// The service calls an application makes per measured sample: colour values,
// differences, reconstruction and densities, with the conditions a caller
// passes in.

#include "lab_bench.h"

#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

using CMetry::CMetryService;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using CMetry::DensityCalculator;
using CMetry::DensityService;
using Utilities::String;

namespace {

using Bench::Conditions;
using Bench::GetVectorUnchanged;
using Bench::Ramp;

void ServiceLabUnchanged(benchmark::State& state)
{
    GetVectorUnchanged(state, "CIELab");
}
BENCHMARK(ServiceLabUnchanged);

void ServiceXYZUnchanged(benchmark::State& state)
{
    GetVectorUnchanged(state, "CIEXYZ");
}
BENCHMARK(ServiceXYZUnchanged);

void ServiceLChUnchanged(benchmark::State& state)
{
    GetVectorUnchanged(state, "CIELCh");
}
BENCHMARK(ServiceLChUnchanged);

// Two illuminants in turn, as when one sample is shown under D50 and D65.
void GetVectorAlternating(benchmark::State& state, const char* space)
{
    const QVSpectrum spectrum = Ramp(0.2f, 0.015f);
    const QVMeasureConditions first = Conditions(space, "D50");
    const QVMeasureConditions second = Conditions(space, "D65");
    bool useFirst = true;
    for (auto _ : state) {
        QVColorVector vector = CMetryService::GetVector(spectrum, useFirst ? first : second);
        benchmark::DoNotOptimize(vector);
        useFirst = !useFirst;
    }
    state.SetItemsProcessed(state.iterations());
}

void ServiceLabAlternating(benchmark::State& state)
{
    GetVectorAlternating(state, "CIELab");
}
BENCHMARK(ServiceLabAlternating);

void ServiceXYZAlternating(benchmark::State& state)
{
    GetVectorAlternating(state, "CIEXYZ");
}
BENCHMARK(ServiceXYZAlternating);

void ServiceLChAlternating(benchmark::State& state)
{
    GetVectorAlternating(state, "CIELCh");
}
BENCHMARK(ServiceLChAlternating);

void DeltaE(benchmark::State& state, const char* formula, float p1, float p2, float p3)
{
    const QVSpectrum first = Ramp(0.2f, 0.015f);
    const QVSpectrum second = Ramp(0.25f, 0.012f);
    QVMeasureConditions conditions = Conditions("CIELab", "D50");
    conditions.SetMeasureCondition(String("ColorSpaceDescription.DeltaEFormula"), String(formula));
    for (auto _ : state) {
        benchmark::DoNotOptimize(CMetryService::GetDeltaE(first, second, conditions, p1, p2, p3));
    }
    state.SetItemsProcessed(state.iterations());
}

void ServiceDeltaECMC(benchmark::State& state)
{
    DeltaE(state, "CMC", 2.0f, 1.0f, 0.0f);
}
BENCHMARK(ServiceDeltaECMC);

void ServiceDeltaE94(benchmark::State& state)
{
    DeltaE(state, "94", 1.0f, 1.0f, 1.0f);
}
BENCHMARK(ServiceDeltaE94);

void ServiceColorTemperatureOfDaylight(benchmark::State& state)
{
    QVMeasureConditions emission;
    emission.SetMeasureCondition(String("Colorimetric.Illumination"), String("Emission"));
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = CMetry::Tables::IlluminantD65[80 + 10 * i];
    }
    const QVSpectrum daylight(values, emission);
    for (auto _ : state) {
        benchmark::DoNotOptimize(CMetryService::GetColorTemperature(daylight));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ServiceColorTemperatureOfDaylight);

// A spectrum for a Lab value: the search of the reconstruction.
void ServiceLabToSpectrum(benchmark::State& state)
{
    const QVMeasureConditions conditions = Conditions("CIELab", "D50");
    const QVColorVector lab(62.0f, 18.0f, -24.0f, conditions);
    for (auto _ : state) {
        QVSpectrum spectrum = CMetryService::GetSpectrum(lab);
        benchmark::DoNotOptimize(spectrum);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ServiceLabToSpectrum);

QVMeasureConditions DensityConditions(const char* whiteBase, const char* mode)
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Colorimetric.WhiteBase"), String(whiteBase));
    conditions.SetMeasureCondition(String("Colorimetric.DensityStandard"), String("DINNB"));
    conditions.SetMeasureCondition(String("Colorimetric.DensityFilterMode"), String(mode));
    return conditions;
}

// The four filter densities of a cyan solid relative to paper white.
void DensityVector(benchmark::State& state)
{
    DensityService::SetPaperWhite(Ramp(0.85f, 0.001f));
    const QVSpectrum solid = Ramp(0.6f, -0.015f);
    CMetry::QVDensity densities;
    for (auto _ : state) {
        benchmark::DoNotOptimize(DensityCalculator::GetDensityVector(solid, CMetry::DensityStdDINNB,
                                                                     CMetry::WhiteBasePaper, densities));
        benchmark::DoNotOptimize(densities);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(DensityVector);

void ServiceDotGain(benchmark::State& state)
{
    DensityService::SetPaperWhite(Ramp(0.85f, 0.001f));
    const QVSpectrum solid = Ramp(0.6f, -0.015f);
    const QVSpectrum tint = Ramp(0.75f, -0.008f);
    const QVMeasureConditions conditions = DensityConditions("Paper", "Cyan");
    for (auto _ : state) {
        benchmark::DoNotOptimize(DensityService::GetDotGain(tint, solid, conditions, 40.0f));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ServiceDotGain);

} // namespace

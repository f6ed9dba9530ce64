// The calculator's calls without the service: Lab and XYZ of a spectrum,
// differences, the colour temperature. The bare arithmetic of Lab, the
// suite's yardstick, is in lab_bench.cpp.

#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

using CMetry::CMetryCalculator;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;

namespace {

QVSpectrum Sample()
{
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = 0.2f + 0.015f * static_cast<float>(i);
    }
    return QVSpectrum(values);
}

void CalculatorLabFromSpectrum(benchmark::State& state)
{
    const QVSpectrum spectrum = Sample();
    const QVMeasureConditions conditions;
    QVColorVector lab;
    CMetryCalculator::GetVector_CIELab(spectrum, conditions, lab);
    for (auto _ : state) {
        CMetryCalculator::GetVector_CIELab(spectrum, conditions, lab);
        benchmark::DoNotOptimize(lab);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CalculatorLabFromSpectrum);

void CalculatorXYZFromSpectrum(benchmark::State& state)
{
    const QVSpectrum spectrum = Sample();
    const QVMeasureConditions conditions;
    QVColorVector xyz;
    for (auto _ : state) {
        CMetryCalculator::GetVector_CIEXYZ(spectrum, conditions, xyz);
        benchmark::DoNotOptimize(xyz);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CalculatorXYZFromSpectrum);

void CalculatorCMCOfTwoSpectra(benchmark::State& state)
{
    const QVSpectrum first = Sample();
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = 0.25f + 0.012f * static_cast<float>(i);
    }
    const QVSpectrum second(values);
    const QVMeasureConditions conditions;
    for (auto _ : state) {
        benchmark::DoNotOptimize(CMetryCalculator::GetDeltaE_CMC(first, second, conditions, 2.0f, 1.0f));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CalculatorCMCOfTwoSpectra);

void CalculatorCIE94OfTwoSpectra(benchmark::State& state)
{
    const QVSpectrum first = Sample();
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = 0.25f + 0.012f * static_cast<float>(i);
    }
    const QVSpectrum second(values);
    const QVMeasureConditions conditions;
    for (auto _ : state) {
        benchmark::DoNotOptimize(CMetryCalculator::GetDeltaE_94(first, second, conditions, 1.0f, 1.0f, 1.0f));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CalculatorCIE94OfTwoSpectra);

void ColorTemperatureOfDaylight(benchmark::State& state)
{
    QVMeasureConditions emission;
    emission.SetMeasureCondition(Utilities::String("Colorimetric.Illumination"), Utilities::String("Emission"));
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = CMetry::Tables::IlluminantD65[80 + 10 * i];
    }
    const QVSpectrum daylight(values, emission);
    CMetry::ColorTemperature search;
    for (auto _ : state) {
        benchmark::DoNotOptimize(search.GetColorTemperature(daylight));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ColorTemperatureOfDaylight);

} // namespace

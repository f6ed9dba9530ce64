// The engine's most frequent call: Lab of a spectrum under unchanged
// conditions, next to the bare arithmetic it needs.

#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

#include <cmath>

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

// The arithmetic alone: 3 x 36 multiply-adds with the library's weights and
// the Lab formulas, on plain floats. It must give the library's Lab to the
// last bit, or the comparison would be with a different calculation.
void LabKernel(const float (&weights)[3][36], const float (&white)[3], const float* values, float (&out)[3])
{
    double f[3];
    for (int axis = 0; axis < 3; ++axis) {
        float sum = 0.0f;
        for (int i = 0; i < 36; ++i) {
            sum += weights[axis][i] * values[i];
        }
        const auto r = static_cast<float>(static_cast<double>(white[1] * sum) / white[axis] / 100.0);
        f[axis] = r > 0.008856 ? std::pow(static_cast<double>(r), 1.0 / 3.0)
                               : static_cast<double>(7.787f) * r + 0.13793103396892548;
    }
    out[0] = static_cast<float>(116.0 * f[1] - 16.0);
    out[1] = static_cast<float>((f[0] - f[1]) * 500.0);
    out[2] = static_cast<float>((f[1] - f[2]) * 200.0);
}

void BareLabKernel(benchmark::State& state)
{
    const QVSpectrum spectrum = Sample();
    const QVMeasureConditions conditions;
    QVColorVector lab;
    CMetryCalculator::GetVector_CIELab(spectrum, conditions, lab);
    const CMetry::Weightfactors factors(conditions);
    float weights[3][36];
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = spectrum[i];
        for (unsigned short axis = 0; axis < 3; ++axis) {
            weights[axis][i] = factors[axis][i];
        }
    }
    const float white[3] = {factors.GetFilterSum(0), factors.GetFilterSum(1), factors.GetFilterSum(2)};
    float out[3];
    LabKernel(weights, white, values, out);
    for (int axis = 0; axis < 3; ++axis) {
        if (out[axis] != lab[axis]) {
            state.SkipWithError("the bare kernel does not give the library's Lab");
            return;
        }
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(values);
        LabKernel(weights, white, values, out);
        benchmark::DoNotOptimize(out);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BareLabKernel);

} // namespace

namespace {

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

#include "lab_bench.h"

#include <cmath>

using CMetry::CMetryCalculator;
using CMetry::CMetryService;
using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using Utilities::String;

namespace Bench {

QVSpectrum Ramp(float start, float step)
{
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = start + step * static_cast<float>(i);
    }
    return QVSpectrum(values);
}

QVMeasureConditions Conditions(const char* space, const char* illumination)
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("ColorSpaceDescription.Type"), String(space));
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String(illumination));
    conditions.SetMeasureCondition(String("Colorimetric.WhiteBase"), String("Absolute"));
    return conditions;
}

void GetVectorUnchanged(benchmark::State& state, const char* space)
{
    const QVSpectrum spectrum = Ramp(0.2f, 0.015f);
    const QVMeasureConditions conditions = Conditions(space, "D50");
    for (auto _ : state) {
        QVColorVector vector = CMetryService::GetVector(spectrum, conditions);
        benchmark::DoNotOptimize(vector);
    }
    state.SetItemsProcessed(state.iterations());
}

namespace {

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
    const QVSpectrum spectrum = Ramp(0.2f, 0.015f);
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

} // namespace Bench

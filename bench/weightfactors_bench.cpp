// Building Weightfactors: the expensive step of the engine, run at every
// change of illuminant, observer or user spectrum.

#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;
using CMetry::Weightfactors;
using Utilities::String;

namespace {

QVMeasureConditions WithIllumination(const char* illumination)
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(String("Colorimetric.Illumination"), String(illumination));
    return conditions;
}

void Build(benchmark::State& state, const QVMeasureConditions& conditions)
{
    for (auto _ : state) {
        Weightfactors factors(conditions);
        benchmark::DoNotOptimize(factors.GetFilterSum(0));
    }
}

void WeightfactorsTableOneNanometre(benchmark::State& state)
{
    Build(state, WithIllumination("D65"));
}
BENCHMARK(WeightfactorsTableOneNanometre);

void WeightfactorsTableFiveNanometre(benchmark::State& state)
{
    Build(state, WithIllumination("D50"));
}
BENCHMARK(WeightfactorsTableFiveNanometre);

void WeightfactorsDaylightSynthesis(benchmark::State& state)
{
    Build(state, WithIllumination("Dxx, Temperature:5000"));
}
BENCHMARK(WeightfactorsDaylightSynthesis);

void WeightfactorsUserSpectrum(benchmark::State& state)
{
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = 50.0f + static_cast<float>(i);
    }
    QVMeasureConditions conditions;
    conditions.SetUserdefinedIllumination(QVSpectrum(values));
    Build(state, conditions);
}
BENCHMARK(WeightfactorsUserSpectrum);

void WeightfactorsEmission(benchmark::State& state)
{
    Build(state, WithIllumination("Emission"));
}
BENCHMARK(WeightfactorsEmission);

} // namespace

// What the values of the engine cost to copy and compare: every evaluation
// copies a spectrum or a colour vector, and with it a condition set.

#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

using CMetry::QVColorVector;
using CMetry::QVMeasureConditions;
using CMetry::QVSpectrum;

namespace {

QVMeasureConditions SomeConditions()
{
    QVMeasureConditions conditions;
    conditions.SetMeasureCondition(Utilities::String("Colorimetric.Observer"), Utilities::String("TenDegree"));
    conditions.SetMeasureCondition(Utilities::String("ColorSpaceDescription.Type"), Utilities::String("CIELCh"));
    return conditions;
}

void ConditionsDefaultConstruction(benchmark::State& state)
{
    for (auto _ : state) {
        QVMeasureConditions conditions;
        benchmark::DoNotOptimize(conditions);
    }
}
BENCHMARK(ConditionsDefaultConstruction);

void ConditionsCopy(benchmark::State& state)
{
    const QVMeasureConditions source = SomeConditions();
    for (auto _ : state) {
        QVMeasureConditions copy(source);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(ConditionsCopy);

void ConditionsAssignment(benchmark::State& state)
{
    const QVMeasureConditions source = SomeConditions();
    QVMeasureConditions target;
    for (auto _ : state) {
        target = source;
        benchmark::DoNotOptimize(target);
    }
}
BENCHMARK(ConditionsAssignment);

void ConditionsComparison(benchmark::State& state)
{
    const QVMeasureConditions first = SomeConditions();
    const QVMeasureConditions second(first);
    for (auto _ : state) {
        benchmark::DoNotOptimize(first == second);
    }
}
BENCHMARK(ConditionsComparison);

void SpectrumCopy(benchmark::State& state)
{
    float values[36];
    for (int i = 0; i < 36; ++i) {
        values[i] = 0.01f * static_cast<float>(i);
    }
    const QVSpectrum source(values, SomeConditions());
    for (auto _ : state) {
        QVSpectrum copy(source);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(SpectrumCopy);

void ColorVectorCopy(benchmark::State& state)
{
    const QVColorVector source(50.0f, 10.0f, -20.0f, SomeConditions());
    for (auto _ : state) {
        QVColorVector copy(source);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(ColorVectorCopy);

} // namespace

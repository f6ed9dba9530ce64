// What the values of the engine cost to copy and compare: every evaluation
// copies a spectrum or a colour vector, and with it a condition set.

#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

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

namespace {

// The container behind every condition set: keys are texts.
Utilities::String Key(int i)
{
    char text[32];
    std::snprintf(text, sizeof text, "Colorimetric.Key%d", i);
    return Utilities::String(text);
}

void MapInsert(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    std::vector<Utilities::String> keys;
    for (int i = 0; i < count; ++i) {
        keys.push_back(Key(i));
    }
    const Utilities::String value("TwoDegree");
    for (auto _ : state) {
        Utilities::Map<Utilities::String, Utilities::String> map;
        for (const Utilities::String& key : keys) {
            map[key] = value;
        }
        benchmark::DoNotOptimize(map.GetCount());
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(MapInsert)->Arg(16)->Arg(1024);

void MapLookup(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    Utilities::Map<Utilities::String, Utilities::String> map;
    std::vector<Utilities::String> keys;
    for (int i = 0; i < count; ++i) {
        keys.push_back(Key(i));
        map[keys.back()] = Utilities::String("TwoDegree");
    }
    const auto& readOnly = map;
    for (auto _ : state) {
        for (const Utilities::String& key : keys) {
            benchmark::DoNotOptimize(readOnly[key]);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(MapLookup)->Arg(16)->Arg(1024);

} // namespace

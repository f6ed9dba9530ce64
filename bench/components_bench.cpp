// What a component costs to get by name: Resolve<T> end to end through the
// naming service and a plug-in, next to the least such a call has to do (one
// lookup by name and the component's `new`).
//
// The resolved component comes from the bench plug-ins
// (bench_counter_plugin.cpp), twenty files of one SampleCounter each under
// names of their own, added to this program's naming service with
// LoadAdditionalPluginLibrary. The program has no folder "plugins" beside
// it: those twenty and the library's own components are all the service
// offers. A component of the library itself takes the same path, with
// LocalLoader answering from the library's factory in place of the
// plug-in's entry point.

#include "bench/bench_counter.h"

#include <qvimanager/qvimanager.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

using BenchComponents::Counter;
using BenchComponents::SampleCounter;
using Utilities::ComponentCreatorBase;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::NamingService;
using Utilities::SmartPointer;
using Utilities::String;

namespace {

constexpr int kPlugins = 20;

std::string Numbered(const char* format, int index)
{
    char text[64];
    std::snprintf(text, sizeof text, format, index);
    return text;
}

String CounterName(int index)
{
    return String(Numbered("BenchCounter%02d", index).c_str());
}

// Adds the twenty bench plug-ins to this program's naming service, once.
// An empty text means they are there; otherwise it says what failed.
const std::string& LoadBenchPlugins()
{
    static const std::string failure = [] {
        try {
            NamingService* const service = NamingService::Instance();
            for (int index = 0; index < kPlugins; ++index) {
                const std::string path =
                    std::string(QVIMANAGER_BENCH_PLUGIN_DIR) + Numbered("/bench_counter_%02d.dll", index);
                service->LoadAdditionalPluginLibrary(*Utilities::File::NewInstance(String(path.c_str())));
            }
            return std::string();
        } catch (const Utilities::Exception& caught) {
            return std::string(caught.GetExceptionText().GetCharPointer());
        }
    }();
    return failure;
}

// Resolve<T> of a registered component, the result released at once: the
// service's lookup of the name, the plug-in loader, the plug-in's factory
// lookup, the creator's `new` (and its reference counter), the cast to the
// interface, and the release of both.
void ResolveComponent(benchmark::State& state)
{
    const std::string& failure = LoadBenchPlugins();
    if (!failure.empty()) {
        state.SkipWithError(failure.c_str());
        return;
    }
    const String name = CounterName(kPlugins / 2);
    // A working counter, or the time would be that of a failure.
    {
        const SmartPointer<Counter> counter = Utilities::Resolve<Counter>(name);
        if (!counter.IsValid() || counter->Next() != 1) {
            state.SkipWithError("Resolve<Counter> gave no working counter");
            return;
        }
    }
    for (auto _ : state) {
        SmartPointer<Counter> counter = Utilities::Resolve<Counter>(name);
        benchmark::DoNotOptimize(counter);
    }
    state.SetItemsProcessed(state.iterations());
}
// Five short repetitions each, here and in the baseline: bench/ratios.py
// compares their medians, which a burst of load on the machine moves less
// than it moves one long run.
BENCHMARK(ResolveComponent)->Repetitions(5)->MinTime(0.2);

// The baseline: what resolving a name costs at the least, one lookup in a
// map of as many creators as the service has names, plus the creator's
// work: the creator makes the component (its `new`, and the reference
// counter of the pointer it comes in), which is then released as in
// ResolveComponent. What ResolveComponent costs beyond this is the
// naming service's own: the lookup in the file's factory, the loader and
// the entry point, and the cast to the interface.
class LocalCounter : public SampleCounter {
public:
    static Map<String, Utilities::Anything> GetDescriptor()
    {
        Map<String, Utilities::Anything> descriptor;
        descriptor[String("name")] = Utilities::Anything("LocalBenchCounter");
        descriptor[String("version")] = Utilities::Anything("$Revision: 1.0 $");
        descriptor[String("category")] = Utilities::Anything("Bench");
        return descriptor;
    }
};

Utilities::ComponentCreatorNormal<LocalCounter> localCreator;

void LookupAndCreateComponent(benchmark::State& state)
{
    Map<String, ComponentCreatorBase*> creators;
    for (int index = 0; index < kPlugins; ++index) {
        creators[CounterName(index)] = &localCreator;
    }
    const Map<String, ComponentCreatorBase*>& readOnly = creators;
    const String name = CounterName(kPlugins / 2);
    for (auto _ : state) {
        MapIterator<String, ComponentCreatorBase*> found = readOnly.Find(name);
        SmartPointer<Utilities::Component> made;
        found.GetValue()->CreateComponent(&made);
        benchmark::DoNotOptimize(made);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(LookupAndCreateComponent)->Repetitions(5)->MinTime(0.2);

} // namespace

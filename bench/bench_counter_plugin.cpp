// A bench plug-in: one SampleCounter under the name BENCH_COUNTER_NAME.
// Twenty plug-ins are built from this file, each with a name of its own.

#include "bench/bench_counter.h"
#include "qvimanager/components/component_creator.h"

Utilities::Map<Utilities::String, Utilities::Anything> BenchComponents::SampleCounter::GetDescriptor()
{
    Utilities::Map<Utilities::String, Utilities::Anything> descriptor;
    descriptor[Utilities::String("name")] = Utilities::Anything(BENCH_COUNTER_NAME);
    descriptor[Utilities::String("version")] = Utilities::Anything("$Revision: 1.0 $");
    descriptor[Utilities::String("category")] = Utilities::Anything("Bench");
    return descriptor;
}

namespace {

Utilities::ComponentCreatorNormal<BenchComponents::SampleCounter> creator;

} // namespace

// A bench plug-in: one SampleCounter under the name BENCH_COUNTER_NAME.
// Twenty plug-ins are built from this file, each with a name of its own.

#include "bench/bench_counter.h"
#include "qvimanager/components/component_creator.h"

Utilities::Map<Utilities::String, Utilities::Anything> BenchComponents::SampleCounter::GetDescriptor()
{
    return Utilities::MakeComponentDescriptor(BENCH_COUNTER_NAME, "$Revision: 1.0 $", "Bench");
}

namespace {

Utilities::ComponentCreatorNormal<BenchComponents::SampleCounter> creator;

} // namespace

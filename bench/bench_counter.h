#ifndef QVIMANAGER_BENCH_BENCH_COUNTER_H
#define QVIMANAGER_BENCH_BENCH_COUNTER_H

// The component of the bench plug-ins, shared by the plug-ins and the bench
// program as a driver's interface is shared by the driver and its
// application. Each bench plug-in offers one SampleCounter under a name of
// its own; the bench program resolves it as a Counter, and makes the same
// class with a plain `new` for the baseline.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

namespace BenchComponents {

class Counter : public Utilities::Component {
public:
    // One more than the last call gave; 1 the first time.
    virtual long Next() = 0;
};

class SampleCounter : public Counter {
public:
    // Defined by each plug-in, with the name it offers the component under.
    static Utilities::Map<Utilities::String, Utilities::Anything> GetDescriptor();

    long Next() override
    {
        return ++count;
    }

private:
    long count = 0;
};

} // namespace BenchComponents

#endif

#ifndef QVIMANAGER_TESTS_COMPONENTS_TEST_COMPONENTS_H
#define QVIMANAGER_TESTS_COMPONENTS_TEST_COMPONENTS_H

// Component classes of the test programs, with a record of what happened
// to their objects.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/exception.h"
#include "tests/plugins/plugin_probe.h"

namespace ComponentTests {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

using TestPlugins::Descriptor;

// Counts constructions and destructions of all test components.
struct Census {
    static inline int made = 0;
    static inline int gone = 0;
};

class Counted : public Utilities::Component {
public:
    Counted()
    {
        ++Census::made;
    }
    Counted(const Counted& other) : Utilities::Component(other)
    {
        ++Census::made;
    }
    Counted& operator=(const Counted&) = default;
    ~Counted() override
    {
        ++Census::gone;
    }
};

// A normal component.
class Lamp : public Counted {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return Descriptor("Lamp", "$Revision: 1.2 $", "Light");
    }
};

// A second class under another name.
class Switch : public Counted {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return Descriptor("Switch", "$Revision: 1.1 $", "Control");
    }
};

// A singleton whose readiness for unload can be set.
class Clock : public Counted {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return Descriptor("Clock", "$Revision: 1.4 $", "Time");
    }
    bool PrepareForUnload() override
    {
        ++asked;
        return ready;
    }
    static inline bool ready = true;
    static inline int asked = 0;
};

// Another class that claims the name "Lamp".
class SecondLamp : public Counted {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return Descriptor("Lamp", "$Revision: 9.9 $", "Duplicate");
    }
};

// A descriptor without "name".
class Nameless : public Counted {
public:
    static Map<String, Anything> GetDescriptor()
    {
        Map<String, Anything> descriptor;
        descriptor[String("version")] = Anything("$Revision: 1.0 $");
        return descriptor;
    }
};

// A component whose constructor fails.
class Fuse : public Counted {
public:
    Fuse()
    {
        throw Utilities::ExceptionResourceNotAvailable("Fuse blown");
    }
    static Map<String, Anything> GetDescriptor()
    {
        return Descriptor("Fuse", "$Revision: 1.0 $", "Light");
    }
};

} // namespace ComponentTests

#endif

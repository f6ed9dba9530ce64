// A plug-in whose components carry descriptor values of several kinds, for
// the descriptor queries: "rank" (long), "tier" (short) and "label" (text),
// in category "TestSort"; one in category "5" (a text that looks like a
// number); one in "TestOther" without any of the three keys.

#include "qvimanager/components/component_creator.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

struct Row {
    const char* name;
    const char* category;
    long rank;   // < 0: no "rank"
    short tier;  // < 0: no "tier"
    const char* label;  // null: no "label"
};

// In order of registration.
constexpr Row kRows[] = {
    {"SortAlpha", "TestSort", 3, 2, "pear"},
    {"SortBeta", "TestSort", 1, 2, "apple"},
    {"SortGamma", "TestSort", 3, 1, "fig"},
    {"SortDelta", "TestSort", 2, -1, "Zed"},
    {"LooksNumeric", "5", 4, 4, "five"},
    {"Unranked", "TestOther", -1, -1, nullptr},
};

template <int N>
class Sortable : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        const Row& row = kRows[N];
        Map<String, Anything> descriptor = TestPlugins::Descriptor(row.name, "$Revision: 1.0 $", row.category);
        if (row.rank >= 0) {
            descriptor[String("rank")] = Anything(row.rank);
        }
        if (row.tier >= 0) {
            descriptor[String("tier")] = Anything(row.tier);
        }
        if (row.label != nullptr) {
            descriptor[String("label")] = Anything(row.label);
        }
        return descriptor;
    }
    String Identify() override
    {
        return String("descriptor_kinds: ") + String(kRows[N].name);
    }
};

Utilities::ComponentCreatorNormal<Sortable<0>> creator0;
Utilities::ComponentCreatorNormal<Sortable<1>> creator1;
Utilities::ComponentCreatorNormal<Sortable<2>> creator2;
Utilities::ComponentCreatorNormal<Sortable<3>> creator3;
Utilities::ComponentCreatorNormal<Sortable<4>> creator4;
Utilities::ComponentCreatorNormal<Sortable<5>> creator5;

} // namespace

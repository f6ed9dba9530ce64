// NamingService::GetFilteredSortedDescriptorsList over arbitrary
// descriptors. Each input makes a naming service of its own, registers the
// input's descriptors through a plug-in file (descriptors_plugin.cpp) by
// the revision rule, and queries them with an arbitrary filter, sort key
// and sort type. A list it gives must be what a walk of the registered
// descriptors with the same filter gives, sorted stably by the rule of the
// sort type; a refusal must be one of its three texts and have its cause
// among the matching descriptors.

#include "fuzz/fuzz_input.h"
#include "fuzz/string_text.h"

#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/naming_service_iterator.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/file.h"

#include <algorithm>
#include <cstdint>
#include <dlfcn.h>
#include <string>
#include <vector>

#ifndef QVIMANAGER_FUZZ_DESCRIPTORS_PLUGIN
#error "QVIMANAGER_FUZZ_DESCRIPTORS_PLUGIN names the plug-in file"
#endif

namespace {

using Fuzz::Check;
using Fuzz::Text;
using Utilities::Anything;
using Utilities::List;
using Utilities::ListIterator;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::NamingService;
using Utilities::NamingServiceIterator;
using Utilities::String;

using Descriptor = Map<String, Anything>;
using Descriptors = List<Descriptor>;
using SetDescriptors = void (*)(const Descriptors*);

// A naming service of this input's own.
class Service : public NamingService {
public:
    Service() = default;
    ~Service() override = default;
};

SetDescriptors setDescriptors = nullptr;

const char* const kKeys[] = {"name", "version", "category", "rank", "weight", ""};
const char* const kNames[] = {"Alpha", "Beta", "Gamma", "Alpha ", "alpha", ""};
const char* const kVersions[] = {"$Revision: 1.5 $", "$Revision: 1.10 $", "$Revision: 1.9 $", "$Revision: 2 $",
                                 "1.5", "$Revision:  $", "$Revision: x $"};
const char* const kCategories[] = {"TestSort", "Other", ""};

String Choose(Fuzz::Input& input, const char* const* pool, unsigned count)
{
    const std::uint8_t selector = input.Byte();
    if (selector >= 0xF0) {
        return String(input.Text(16));
    }
    return String(pool[selector % count]);
}

Anything Value(Fuzz::Input& input, const char* const* pool, unsigned count)
{
    switch (input.Choice(8)) {
    case 0:
        return Anything(static_cast<long>(static_cast<std::int32_t>(input.Long())));
    case 1:
        return Anything(static_cast<short>(input.Word()));
    case 2:
        return Anything(static_cast<double>(static_cast<std::int16_t>(input.Word())) / 8.0);
    case 3:
        return Anything((input.Byte() & 1) != 0);
    case 4:
        return Anything();
    default:
        return Anything(Choose(input, pool, count));
    }
}

Descriptors MakeDescriptors(Fuzz::Input& input)
{
    Descriptors descriptors;
    const unsigned count = input.Choice(9);
    for (unsigned i = 0; i < count; ++i) {
        Descriptor descriptor;
        const std::uint8_t present = input.Byte();
        if ((present & 1) != 0) {
            // Mostly a text, as the service requires.
            descriptor[String("name")] = (present & 0x80) != 0 ? Value(input, kNames, 6) : Anything(Choose(input, kNames, 6));
        }
        if ((present & 2) != 0) {
            descriptor[String("version")] =
                (present & 0x40) != 0 ? Value(input, kVersions, 7) : Anything(Choose(input, kVersions, 7));
        }
        if ((present & 4) != 0) {
            descriptor[String("category")] = Value(input, kCategories, 3);
        }
        if ((present & 8) != 0) {
            descriptor[String("rank")] = Value(input, kNames, 6);
        }
        if ((present & 16) != 0) {
            descriptor[Choose(input, kKeys, 6)] = Value(input, kNames, 6);
        }
        descriptors.Append(descriptor);
    }
    return descriptors;
}

// The order of two values under the sort type; false for every other type.
bool Less(const Anything& a, const Anything& b, NamingService::SortType type)
{
    switch (type) {
    case NamingService::SortAsString:
        return a.GetString() < b.GetString();
    case NamingService::SortAsLong:
        return a.GetLong() < b.GetLong();
    case NamingService::SortAsShort:
        return a.GetShort() < b.GetShort();
    default:
        return false;
    }
}

bool Readable(const Anything& value, NamingService::SortType type)
{
    try {
        switch (type) {
        case NamingService::SortAsString:
            (void)value.GetString();
            break;
        case NamingService::SortAsLong:
            (void)value.GetLong();
            break;
        case NamingService::SortAsShort:
            (void)value.GetShort();
            break;
        default:
            break;
        }
        return true;
    } catch (const Utilities::Exception&) {
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Held for the whole run, so that the file the services load and
    // unload is this one, with its descriptor pointer.
    void* const handle = dlopen(QVIMANAGER_FUZZ_DESCRIPTORS_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        Fuzz::Broken(std::string("cannot load the descriptors plug-in: ") + dlerror());
    }
    setDescriptors = reinterpret_cast<SetDescriptors>(dlsym(handle, "FuzzSetDescriptors"));
    Check(setDescriptors != nullptr, "the descriptors plug-in has no FuzzSetDescriptors");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::Input input(data, size);
    const Descriptors descriptors = MakeDescriptors(input);
    const String filterKey = Choose(input, kKeys, 6);
    const Anything filterValue = Value(input, kCategories, 3);
    const String sortKey = Choose(input, kKeys, 6);
    const auto sortType = static_cast<NamingService::SortType>(input.Choice(4));

    setDescriptors(&descriptors);
    Service service;
    try {
        service.LoadAdditionalPluginLibrary(
            *Utilities::File::NewInstance(String(QVIMANAGER_FUZZ_DESCRIPTORS_PLUGIN)));
    } catch (const Utilities::ExceptionWrongType&) {
        // A "name" or "version" that is not a text: the descriptors before
        // it stay registered.
    }
    setDescriptors(nullptr);

    // What the query should give: the walk of the filter, sorted stably.
    std::vector<Descriptor> expected;
    for (NamingServiceIterator it = service.GetNamingServiceIterator(filterKey, filterValue); it.IsValid(); it++) {
        expected.push_back(it.Current());
    }
    bool missing = false;
    bool unreadable = false;
    for (const Descriptor& descriptor : expected) {
        const MapIterator<String, Anything> value = descriptor.Find(sortKey);
        if (!value.IsValid()) {
            missing = true;
        } else if (!Readable(value.GetValue(), sortType)) {
            unreadable = true;
        }
    }

    Descriptors result;
    try {
        result = service.GetFilteredSortedDescriptorsList(filterKey, filterValue, sortKey, sortType);
    } catch (const Utilities::ExceptionNamingService& refusal) {
        const std::string text = Text(refusal.GetExceptionText());
        if (text == "Sort key doesn't exist in all components corresponding to filter settings.") {
            Check(missing, "refused for a missing sort key that every match has");
        } else if (text == "Specified sort type is not correct") {
            Check(unreadable, "refused for a sort type that every match reads");
        } else {
            Fuzz::Broken("an unexpected refusal: " + text);
        }
        return 0;
    }
    Check(!missing || expected.empty(), "a match without the sort key was sorted");
    Check(!unreadable || expected.size() < 2, "a value of another kind was sorted");
    std::stable_sort(expected.begin(), expected.end(), [&](const Descriptor& a, const Descriptor& b) {
        return Less(a[sortKey], b[sortKey], sortType);
    });
    Check(result.GetItemCount() == expected.size(), "the list has another length than the filter's walk");
    std::size_t index = 0;
    for (ListIterator<Descriptor> it = result.Begin(); it.IsValid(); it++, ++index) {
        Check(Anything(it.Current()) == Anything(expected[index]),
              "descriptor " + std::to_string(index) + " of the list is not the one expected");
    }
    return 0;
}

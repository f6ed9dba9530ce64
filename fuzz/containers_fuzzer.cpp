// Anything, Map, List and Vector driven by a byte script: insert, find,
// iterate, copy, assign, clear (a list's teardown with iterators standing
// on its elements) and resize, each checked against a model on the
// standard containers.
//
// Map's contract includes its order: ascending bucket (String::GetHash(53)
// of the key), then insertion order within a bucket. The model keeps the
// keys in insertion order and sorts a copy by bucket, stably.

#include "fuzz/fuzz_input.h"
#include "fuzz/string_text.h"

#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using Fuzz::Check;
using Fuzz::Text;
using Utilities::Anything;
using Utilities::List;
using Utilities::ListIterator;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::String;
using Utilities::Vector;

// Keys without NUL: Map compares keys as C strings.
std::string Key(Fuzz::Input& input)
{
    std::string key = input.Text(12);
    key.erase(std::remove(key.begin(), key.end(), '\0'), key.end());
    return key;
}

// A value of one of Anything's kinds, described as text for the model.
Anything Value(Fuzz::Input& input, std::string& model)
{
    switch (input.Choice(6)) {
    case 0:
        model = "empty";
        return Anything();
    case 1: {
        const bool value = (input.Byte() & 1) != 0;
        model = value ? "bool:1" : "bool:0";
        return Anything(value);
    }
    case 2: {
        const auto value = static_cast<short>(input.Word());
        model = "short:" + std::to_string(value);
        return Anything(value);
    }
    case 3: {
        const auto value = static_cast<long>(static_cast<std::int32_t>(input.Long()));
        model = "long:" + std::to_string(value);
        return Anything(value);
    }
    case 4: {
        const std::string text = Key(input);
        model = "text:" + text;
        return Anything(String(text.c_str()));
    }
    default: {
        // A map of two entries inside.
        Map<String, Anything> inner;
        const std::string first = Key(input);
        const std::string second = Key(input);
        inner[String(first.c_str())] = Anything(String("one"));
        inner[String(second.c_str())] = Anything(2L);
        // NUL parts the two keys: no key holds one.
        model = "map:" + first + std::string(1, '\0') + second;
        return Anything(inner);
    }
    }
}

// What the model text of a value says about an Anything.
std::string Describe(const Anything& value)
{
    if (!value.IsValid()) {
        return "empty";
    }
    // Each getter of another kind refuses; the one of its own kind answers.
    try {
        return std::string("bool:") + (value.GetBool() ? "1" : "0");
    } catch (const Utilities::Exception&) {
    }
    try {
        return "short:" + std::to_string(value.GetShort());
    } catch (const Utilities::Exception&) {
    }
    try {
        return "long:" + std::to_string(value.GetLong());
    } catch (const Utilities::Exception&) {
    }
    try {
        return "text:" + Text(value.GetString());
    } catch (const Utilities::Exception&) {
    }
    try {
        const Map<String, Anything>& inner = value.GetMapOfAnythings();
        std::vector<std::string> keys;
        for (MapIterator<String, Anything> it = inner.Begin(); it.IsValid(); it++) {
            keys.push_back(Text(it.GetKey()));
        }
        // The model names the keys in the order they went in; the map may
        // iterate in another order and holds one entry for equal keys.
        std::string text = "map:";
        for (const std::string& key : keys) {
            text += key + ",";
        }
        return text;
    } catch (const Utilities::Exception&) {
    }
    return "unknown";
}

std::string ModelOfMap(const std::string& model)
{
    if (model.rfind("map:", 0) != 0) {
        return model;
    }
    const std::size_t separator = model.find('\0');
    const std::string first = model.substr(4, separator - 4);
    const std::string second = model.substr(separator + 1);
    // Iteration order of the two keys: by bucket, then insertion order.
    std::vector<std::string> keys{first};
    if (second != first) {
        keys.push_back(second);
    }
    std::stable_sort(keys.begin(), keys.end(), [](const std::string& a, const std::string& b) {
        return String(a.c_str()).GetHash(53) < String(b.c_str()).GetHash(53);
    });
    std::string text = "map:";
    for (const std::string& key : keys) {
        text += key + ",";
    }
    return text;
}

struct MapModel {
    std::vector<std::string> order;
    std::map<std::string, std::string> values;
};

void CheckMap(const Map<String, Anything>& map, const MapModel& model)
{
    Check(map.GetCount() == model.order.size(), "map count");
    std::vector<std::string> expected = model.order;
    std::stable_sort(expected.begin(), expected.end(), [](const std::string& a, const std::string& b) {
        return String(a.c_str()).GetHash(53) < String(b.c_str()).GetHash(53);
    });
    std::vector<std::string> walked;
    for (MapIterator<String, Anything> it = map.Begin(); it.IsValid(); it++) {
        walked.push_back(Text(it.GetKey()));
        Check(Describe(it.GetValue()) == ModelOfMap(model.values.at(walked.back())),
              "map value of " + walked.back() + ": " + Describe(it.GetValue()) + " / " + model.values.at(walked.back()));
    }
    Check(walked == expected, "map iteration order");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::Input input(data, size);
    std::vector<std::unique_ptr<Map<String, Anything>>> maps;
    std::vector<MapModel> mapModels;
    maps.push_back(std::make_unique<Map<String, Anything>>());
    mapModels.emplace_back();

    List<Anything> list;
    std::vector<std::string> listModel;
    // Iterators standing on list elements, with the model text of the
    // element (empty once the list let it go).
    std::vector<ListIterator<Anything>> held;
    std::vector<std::string> heldModel;

    Vector<Anything> vector;
    std::vector<std::string> vectorModel;

    for (unsigned steps = 0; steps < 400 && !input.Empty(); ++steps) {
        const unsigned which = input.Choice(static_cast<unsigned>(maps.size()));
        Map<String, Anything>& map = *maps[which];
        MapModel& model = mapModels[which];
        switch (input.Choice(14)) {
        case 0: { // insert or overwrite
            const std::string key = Key(input);
            std::string value;
            map[String(key.c_str())] = Value(input, value);
            if (model.values.find(key) == model.values.end()) {
                model.order.push_back(key);
            }
            model.values[key] = value;
            break;
        }
        case 1: { // find, and the const operator[]
            const std::string key = Key(input);
            const MapIterator<String, Anything> found = map.Find(String(key.c_str()));
            const bool present = model.values.count(key) != 0;
            Check(found.IsValid() == present, "Find of " + key);
            const Map<String, Anything>& constant = map;
            try {
                const Anything& value = constant[String(key.c_str())];
                Check(present && Describe(value) == ModelOfMap(model.values[key]), "const operator[] of " + key);
            } catch (const Utilities::ExceptionOutOfBound& refusal) {
                Check(!present && Text(refusal.GetExceptionText()) == "Not a valid key for 'operator[key] const'",
                      "const operator[] refused " + key);
            }
            break;
        }
        case 2: // iterate
            CheckMap(map, model);
            break;
        case 3: // copy into a new map
            if (maps.size() < 6) {
                maps.push_back(std::make_unique<Map<String, Anything>>(map));
                mapModels.push_back(model);
                CheckMap(*maps.back(), mapModels.back());
            }
            break;
        case 4: { // assign one map to another (itself included)
            const unsigned target = input.Choice(static_cast<unsigned>(maps.size()));
            *maps[target] = *maps[which];
            mapModels[target] = mapModels[which];
            CheckMap(*maps[target], mapModels[target]);
            break;
        }
        case 5: // erase: an empty map over it
            map = Map<String, Anything>();
            model = MapModel();
            CheckMap(map, model);
            break;
        case 6: { // list: append or insert at the front
            std::string value;
            const Anything made = Value(input, value);
            if ((input.Byte() & 1) != 0) {
                held.push_back(list.Append(made));
                listModel.push_back(value);
            } else {
                held.push_back(list.InsertAtBegin(made));
                listModel.insert(listModel.begin(), value);
            }
            heldModel.push_back(value);
            break;
        }
        case 7: { // list: insert behind a held iterator
            if (held.empty()) {
                break;
            }
            const unsigned at = input.Choice(static_cast<unsigned>(held.size()));
            std::string value;
            const Anything made = Value(input, value);
            try {
                const ListIterator<Anything> inserted = list.InsertAfter(held[at], made);
                Check(!heldModel[at].empty(), "InsertAfter on an element the list let go");
                // The model's position: the held element's index.
                std::size_t index = 0;
                for (ListIterator<Anything> it = list.Begin(); it.IsValid(); it++, ++index) {
                    if (&it.Current() == &inserted.Current()) {
                        break;
                    }
                }
                Check(index > 0 && index <= listModel.size(), "InsertAfter position");
                listModel.insert(listModel.begin() + static_cast<long>(index), value);
            } catch (const Utilities::ExceptionOutOfBound&) {
                Check(heldModel[at].empty(), "InsertAfter refused on an element of the list");
            }
            break;
        }
        case 8: { // list: walk forwards, and check held iterators
            std::vector<std::string> walked;
            for (ListIterator<Anything> it = list.Begin(); it.IsValid(); it++) {
                walked.push_back(Describe(it.Current()));
            }
            std::vector<std::string> expected;
            for (const std::string& value : listModel) {
                expected.push_back(ModelOfMap(value));
            }
            std::string seen;
            for (std::size_t i = 0; i < std::max(walked.size(), expected.size()); ++i) {
                seen += "[" + (i < walked.size() ? walked[i] : "-") + " / " + (i < expected.size() ? expected[i] : "-") +
                        "]";
            }
            Check(walked == expected && list.GetItemCount() == listModel.size(), "list contents (list / model): " + seen);
            for (std::size_t i = 0; i < held.size(); ++i) {
                Check(held[i].IsValid() == !heldModel[i].empty(), "held iterator validity");
            }
            break;
        }
        case 9: { // list: step a held iterator
            if (held.empty()) {
                break;
            }
            const unsigned at = input.Choice(static_cast<unsigned>(held.size()));
            try {
                if ((input.Byte() & 1) != 0) {
                    held[at]++;
                } else {
                    held[at]--;
                }
                // Which element it stands on now is not modelled further.
                heldModel[at] = held[at].IsValid() ? "moved" : "";
            } catch (const Utilities::ExceptionOutOfBound&) {
                Check(!held[at].IsValid(), "a valid iterator refused to step");
            }
            break;
        }
        case 10: // list: teardown with iterators on the elements
            list = List<Anything>();
            listModel.clear();
            for (std::size_t i = 0; i < held.size(); ++i) {
                Check(!held[i].IsValid(), "iterator valid after its list was cleared");
                heldModel[i].clear();
            }
            break;
        case 11: // drop a held iterator: the last one deletes a let-go element
            if (!held.empty()) {
                const unsigned at = input.Choice(static_cast<unsigned>(held.size()));
                held.erase(held.begin() + at);
                heldModel.erase(heldModel.begin() + at);
            }
            break;
        case 12: { // vector: resize, write, read
            const unsigned long count = input.Choice(40);
            vector.SetSize(count);
            vectorModel.resize(count, "empty");
            if (count > 0) {
                const unsigned long index = input.Choice(static_cast<unsigned>(count));
                std::string value;
                vector[index] = Value(input, value);
                vectorModel[index] = value;
            }
            const Vector<Anything> copy = vector;
            Check(copy.GetSize() == vectorModel.size(), "vector size");
            for (unsigned long i = 0; i < copy.GetSize(); ++i) {
                Check(Describe(copy[i]) == ModelOfMap(vectorModel[i]), "vector element");
            }
            try {
                (void)copy[copy.GetSize() + input.Byte()];
                Fuzz::Broken("vector read past its end");
            } catch (const Utilities::ExceptionOutOfBound&) {
            }
            break;
        }
        default: { // Anything: a copy compares equal, the vector inside too
            std::string value;
            const Anything made = Value(input, value);
            Anything copy;
            copy = made;
            Check(copy == made, "a copied Anything compares equal: " + value);
            const Anything wrapped(vector);
            const Anything wrappedCopy(wrapped);
            Check(wrappedCopy == wrapped, "a copied vector Anything compares equal");
            (void)made.GetValueString();
            break;
        }
        }
    }
    for (std::size_t i = 0; i < maps.size(); ++i) {
        CheckMap(*maps[i], mapModels[i]);
    }
    return 0;
}

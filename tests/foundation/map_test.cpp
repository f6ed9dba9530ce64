// Map: 53 buckets, no growth, iteration by ascending bucket and then by
// insertion order. The bucket of a key is String::GetHash(53).

#include "qvimanager/foundation/containers.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using TestSupport::FailureText;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::String;
using Utilities::Vector;

namespace {

template <typename V>
std::vector<std::string> Keys(const Map<String, V>& map)
{
    std::vector<std::string> keys;
    for (MapIterator<String, V> it = map.Begin(); it.IsValid(); it++) {
        keys.push_back(it.GetKey());
    }
    return keys;
}

// The order the table must give: ascending bucket, ties in insertion order.
std::vector<std::string> ExpectedOrder(const std::vector<std::string>& inserted)
{
    std::vector<std::string> order = inserted;
    std::stable_sort(order.begin(), order.end(), [](const std::string& a, const std::string& b) {
        return String(a).GetHash(53) < String(b).GetHash(53);
    });
    return order;
}

Map<String, long> MapOf(const std::vector<std::string>& keys)
{
    Map<String, long> map;
    long value = 0;
    for (const std::string& key : keys) {
        map[String(key)] = value++;
    }
    return map;
}

} // namespace

TEST(MapEmpty, HasInvalidIteratorsAndRefusesConstLookup)
{
    const Map<String, long> map;
    EXPECT_EQ(0UL, map.GetCount());
    EXPECT_FALSE(map.Begin().IsValid());
    EXPECT_FALSE(map.Find(String("a")).IsValid());
    EXPECT_EQ("Not a valid key for 'operator[key] const'", FailureText([&] { (void)map[String("a")]; }));
}

TEST(Map, ConstLookupOfAnAbsentKeyThrows)
{
    Map<String, long> map;
    map[String("a")] = 1;
    const Map<String, long>& constant = map;
    EXPECT_EQ(1L, constant[String("a")]);
    EXPECT_EQ("Not a valid key for 'operator[key] const'", FailureText([&] { (void)constant[String("b")]; }));
    EXPECT_EQ(1UL, map.GetCount());
}

TEST(Map, NonConstLookupOfAnAbsentKeyInsertsADefaultValue)
{
    Map<String, long> map;
    EXPECT_EQ(0L, map[String("name")]);
    EXPECT_EQ(1UL, map.GetCount());
    EXPECT_EQ(0L, map[String("version")]);
    EXPECT_EQ(2UL, map.GetCount());
    map[String("name")] = 5;
    EXPECT_EQ(5L, map[String("name")]);
    EXPECT_EQ(2UL, map.GetCount());
}

TEST(Map, FindStandsOnTheEntry)
{
    Map<String, String> map;
    map[String("key")] = String("value");
    MapIterator<String, String> it = map.Find(String("key"));
    ASSERT_TRUE(it.IsValid());
    EXPECT_STREQ("key", it.GetKey().GetCharPointer());
    EXPECT_STREQ("value", it.GetValue().GetCharPointer());
    it.GetValue() = String("changed");
    EXPECT_STREQ("changed", map[String("key")].GetCharPointer());
    EXPECT_FALSE(map.Find(String("other")).IsValid());
}

TEST(MapOrder, DescriptorKeysIterateCategoryNameVersionWhateverTheInsertionOrder)
{
    std::vector<std::string> keys{"name", "version", "category"};
    std::sort(keys.begin(), keys.end());
    do {
        EXPECT_EQ((std::vector<std::string>{"category", "name", "version"}), Keys(MapOf(keys)));
    } while (std::next_permutation(keys.begin(), keys.end()));
}

TEST(MapOrder, SingleLettersIterateByTheirBuckets)
{
    EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), Keys(MapOf({"c", "a", "b"})));
}

TEST(MapOrder, KeysOfOneBucketKeepTheirInsertionOrder)
{
    // "a", "cy", "dn" and "ec" all hash to bucket 44; "category" and
    // "revision" to 19; "name" and "Colorimetric.Observer" to 23.
    EXPECT_EQ((std::vector<std::string>{"dn", "a", "ec", "cy"}), Keys(MapOf({"dn", "a", "ec", "cy"})));
    EXPECT_EQ((std::vector<std::string>{"cy", "ec", "a", "dn"}), Keys(MapOf({"cy", "ec", "a", "dn"})));
    EXPECT_EQ((std::vector<std::string>{"revision", "category", "Colorimetric.Observer", "name"}),
              Keys(MapOf({"Colorimetric.Observer", "revision", "name", "category"})));
}

TEST(MapOrder, SeveralKeySetsIterateByBucketThenInsertion)
{
    const std::vector<std::vector<std::string>> keySets{
        {"ColorSpaceDescription.Type", "Colorimetric.Illumination", "Colorimetric.Observer",
         "Colorimetric.WhiteBase", "Density.Standard", "path", "name", "version", "category", "revision"},
        {"zeta", "alpha", "", "Alpha", "ALPHA", "\xe9t\xe9", "a text longer than twenty characters", "x"},
    };
    for (const std::vector<std::string>& keys : keySets) {
        EXPECT_EQ(ExpectedOrder(keys), Keys(MapOf(keys)));
    }
    std::vector<std::string> many;
    for (int i = 0; i < 500; ++i) {
        many.push_back("key" + std::to_string((i * 7919) % 1000));
    }
    many.erase(std::unique(many.begin(), many.end()), many.end());
    EXPECT_EQ(ExpectedOrder(many), Keys(MapOf(many)));
}

TEST(MapCopy, CopyIteratesInTheSameOrderAndIsDeep)
{
    const std::vector<std::string> keys{"version", "dn", "name", "a", "category", "ec"};
    Map<String, long> source = MapOf(keys);
    Map<String, long> copy(source);
    EXPECT_EQ(Keys(source), Keys(copy));
    copy[String("a")] = 100;
    copy[String("new")] = 1;
    EXPECT_EQ(3L, source[String("a")]);
    EXPECT_EQ(6UL, source.GetCount());
    EXPECT_EQ(7UL, copy.GetCount());

    Map<String, long> assigned;
    assigned[String("old")] = 1;
    assigned = source;
    EXPECT_EQ(Keys(source), Keys(assigned));
    EXPECT_FALSE(assigned.Find(String("old")).IsValid());
}

TEST(MapCopy, CopyOfAnEmptyMapIsEmpty)
{
    const Map<String, long> empty;
    Map<String, long> copy(empty);
    EXPECT_EQ(0UL, copy.GetCount());
    EXPECT_FALSE(copy.Begin().IsValid());
    copy[String("a")] = 1;
    EXPECT_EQ(1UL, copy.GetCount());
    Map<String, long> assigned = MapOf({"x"});
    assigned = empty;
    EXPECT_EQ(0UL, assigned.GetCount());
    EXPECT_FALSE(assigned.Begin().IsValid());
}

TEST(MapCopy, SelfAssignmentChangesNothing)
{
    Map<String, long> map = MapOf({"a", "b"});
    const Map<String, long>& self = map;
    map = self;
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), Keys(map));
}

TEST(MapIterator, InvalidIteratorRefusesKeyAndValue)
{
    MapIterator<String, long> invalid;
    EXPECT_FALSE(invalid.IsValid());
    EXPECT_EQ("MapIterator is not valid", FailureText([&] { invalid.GetKey(); }));
    EXPECT_EQ("MapIterator is not valid", FailureText([&] { invalid.GetValue(); }));
}

TEST(MapIterator, StepsPastTheLastEntryToInvalid)
{
    const Map<String, long> map = MapOf({"a"});
    MapIterator<String, long> it = map.Begin();
    it++;
    EXPECT_FALSE(it.IsValid());
    EXPECT_EQ("MapIterator is not valid", FailureText([&] { it.GetKey(); }));
    EXPECT_EQ("ListIterator::operator++(): Can't increment iterator because it's invalid",
              FailureText([&] { it++; }));
}

TEST(MapIterator, OutlivesItsMapSafely)
{
    MapIterator<String, String> survivor;
    {
        Map<String, String> map;
        map[String("a text long enough to live on the heap")] = String("and a value long enough too");
        survivor = map.Begin();
        EXPECT_TRUE(survivor.IsValid());
    }
    EXPECT_FALSE(survivor.IsValid());
    EXPECT_EQ("MapIterator is not valid", FailureText([&] { survivor.GetValue(); }));
}

TEST(MapIterator, EntriesAddedBehindTheIteratorAreVisited)
{
    Map<String, long> map = MapOf({"a"});
    MapIterator<String, long> it = map.Begin();
    map[String("c")] = 1;
    it++;
    ASSERT_TRUE(it.IsValid());
    EXPECT_STREQ("c", it.GetKey().GetCharPointer());
}

TEST(MapInstantiations, NestedContainersAsValues)
{
    Map<String, Map<String, String>> sections;
    sections[String("QVIInstrumentManager")][String("RecentUsed")] = String("device");
    Map<String, Vector<String>> lists;
    lists[String("plugins")].SetSize(2);
    lists[String("plugins")][1] = String("b.dll");
    const Map<String, Map<String, String>> copy(sections);
    EXPECT_STREQ("device", copy[String("QVIInstrumentManager")][String("RecentUsed")].GetCharPointer());
    EXPECT_STREQ("b.dll", lists[String("plugins")][1].GetCharPointer());
}

TEST(MapKeys, KeysCompareByText)
{
    Map<String, long> map;
    map[String("Key")] = 1;
    map[String("key")] = 2;
    EXPECT_EQ(2UL, map.GetCount());
    EXPECT_EQ(1L, map[String("Key")]);
    EXPECT_EQ(2L, map[String("key")]);
    map[String()] = 3;
    EXPECT_EQ(3L, map[String("")]);
}

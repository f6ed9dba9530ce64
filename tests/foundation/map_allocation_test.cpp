// A Map entry costs one allocation, lookups cost none, and an empty map
// holds no bucket vector. Every heap allocation of this test program is
// counted.

#include "qvimanager/foundation/containers.h"

#include "tests/support/allocation_counter.h"

#include <gtest/gtest.h>


using TestSupport::allocations;

using Utilities::Map;
using Utilities::MapIterator;
using Utilities::String;

TEST(MapAllocation, EmptyMapHoldsNoBucketVector)
{
    const String key("key");
    const unsigned long before = allocations;
    const Map<String, long> map;
    EXPECT_FALSE(map.Begin().IsValid());
    EXPECT_FALSE(map.Find(key).IsValid());
    EXPECT_EQ(before, allocations);
}

TEST(MapAllocation, FirstEntryMakesTheBucketVector)
{
    const String key("key");
    Map<String, long> map;
    const unsigned long before = allocations;
    map[key] = 1;
    // The vector object, its 53 lists, and the entry.
    EXPECT_EQ(before + 3, allocations);
}

TEST(MapAllocation, EachFurtherEntryCostsOneAllocation)
{
    const String first("first");
    const String second("second");
    const String third("a key longer than the inline buffer");
    Map<String, long> map;
    map[first] = 1;
    unsigned long before = allocations;
    map[second] = 2;
    EXPECT_EQ(before + 1, allocations);
    before = allocations;
    map[third] = 3;
    // The entry, and the heap block of the long key's copy.
    EXPECT_EQ(before + 2, allocations);
}

TEST(MapAllocation, LookupsAndIterationAllocateNothing)
{
    const String first("first");
    const String second("second");
    Map<String, long> map;
    map[first] = 1;
    map[second] = 2;
    const Map<String, long>& constant = map;
    const unsigned long before = allocations;
    EXPECT_EQ(1L, map[first]);
    EXPECT_EQ(2L, constant[second]);
    EXPECT_TRUE(map.Find(first).IsValid());
    unsigned long count = 0;
    for (MapIterator<String, long> it = map.Begin(); it.IsValid(); it++) {
        ++count;
    }
    EXPECT_EQ(2UL, count);
    EXPECT_EQ(before, allocations);
}

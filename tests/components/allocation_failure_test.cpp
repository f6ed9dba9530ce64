// The factory and the naming service when memory for them cannot be had.
// Replaces the global operator new (both forms), so it runs on its own.

#include "qvimanager/components/component_factory.h"
#include "qvimanager/components/naming_service.h"
#include "tests/components/load_test_plugin.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

// How many of the next allocations fail.
int refusals = 0;

} // namespace

void* operator new(std::size_t size)
{
    if (refusals > 0) {
        --refusals;
        throw std::bad_alloc();
    }
    if (void* const block = std::malloc(size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}

// Blocks come from malloc, so they go back with free.
void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}

namespace {

using Utilities::ComponentFactory;
using Utilities::ExceptionComponentFactory;
using Utilities::ExceptionNamingService;
using Utilities::NamingService;
using Utilities::String;

TEST(ComponentFactoryAllocation, FailedAllocationThrows)
{
    refusals = 1;
    const std::string text =
        TestSupport::FailureText<ExceptionComponentFactory>([] { ComponentFactory::Instance(); });
    EXPECT_EQ("Can't create a ComponentFactory instance", text);
    // Nothing was kept: the next call makes the factory.
    EXPECT_NE(nullptr, ComponentFactory::Instance());
}

TEST(ComponentFactoryAllocation, FailedAllocationAtLoadIsKept)
{
    ComponentFactory::ReleaseInstance();
    refusals = 1;
    ComponentFactory::RegisterAtLoad(nullptr);
    EXPECT_STREQ("Can't create a ComponentFactory instance", ComponentFactory::GetLoadFailure().GetCharPointer());
}

TEST(NamingServiceAllocation, FailedAllocationThrowsAndMayBeRetried)
{
    refusals = 1;
    const std::string text = TestSupport::FailureText<ExceptionNamingService>([] { NamingService::Instance(); });
    EXPECT_EQ("Can't create instance of NamingService", text);
    EXPECT_NE(nullptr, NamingService::Instance());
}

TEST(SortedDescriptorsAllocation, OtherFailureGivesTheUnexpectedErrorText)
{
    TestPlugins::LoadTestPlugin("two_components");
    const String filterKey("category");
    const Utilities::Anything anyValue;
    const String sortKey("name");
    const std::string text = TestSupport::FailureText<ExceptionNamingService>([&] {
        // The first allocation of the query is the first element of the
        // result.
        refusals = 1;
        NamingService::Instance()->GetFilteredSortedDescriptorsList(filterKey, anyValue, sortKey,
                                                                    NamingService::SortAsString);
    });
    refusals = 0;
    EXPECT_EQ("An unexpected error occured. Error text:\n\nOut of memory. Can't insert element into list", text);
}

} // namespace

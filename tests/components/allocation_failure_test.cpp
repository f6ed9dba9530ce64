// The factory and the naming service when memory for them cannot be had.
// Replaces the global non-throwing operator new, so it runs on its own.

#include "qvimanager/components/component_factory.h"
#include "qvimanager/components/naming_service.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <new>

namespace {

// How many of the next non-throwing allocations fail.
int refusals = 0;

} // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    if (refusals > 0) {
        --refusals;
        return nullptr;
    }
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

} // namespace

// Callback: the null callback, forwarding, sharing, and the empty pointer.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/callback.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using TestSupport::FailureText;
using Utilities::Anything;
using Utilities::Callback;
using Utilities::CallbackImplementation;
using Utilities::ExceptionNullpointer;
using Utilities::NullCallbackImplementation;
using Utilities::SmartPointer;
using Utilities::String;

// Records what it is given and answers with its length.
class Recording : public CallbackImplementation {
public:
    long Execute(const Anything& argument) override
    {
        ++calls;
        last = argument.GetString().GetCharPointer();
        return static_cast<long>(last.size());
    }
    bool IsValid() const override
    {
        return true;
    }

    int calls = 0;
    std::string last;
};

TEST(Callback, DefaultExecutesToZeroAndIsNotValid)
{
    Callback callback;
    EXPECT_EQ(0, callback.Execute(Anything("event")));
    EXPECT_EQ(0, callback.Execute(Anything()));
    EXPECT_FALSE(callback.IsValid());
    EXPECT_STREQ("Utilities::Callback: Utilities::NullCallbackImplementation", callback.GetValueString().c_str());
}

TEST(Callback, NullImplementationTakesAnyArgument)
{
    NullCallbackImplementation null;
    Utilities::Map<String, Anything> map;
    map[String("Button")] = Anything(1L);
    EXPECT_EQ(0, null.Execute(Anything(map)));
    EXPECT_EQ(0, null.Execute(Anything(2.5)));
    EXPECT_FALSE(null.IsValid());
}

TEST(Callback, ForwardsToItsImplementation)
{
    Recording* recording = new Recording();
    Callback callback{SmartPointer<CallbackImplementation>(recording)};
    EXPECT_TRUE(callback.IsValid());
    EXPECT_EQ(6, callback.Execute(Anything("button")));
    EXPECT_EQ(1, recording->calls);
    EXPECT_EQ("button", recording->last);
    EXPECT_STREQ("Utilities::Callback: (anonymous namespace)::Recording", callback.GetValueString().c_str());
}

TEST(Callback, CopiesShareTheImplementation)
{
    Recording* recording = new Recording();
    Callback callback{SmartPointer<CallbackImplementation>(recording)};
    Callback copy(callback);
    Callback assigned;
    assigned = callback;
    copy.Execute(Anything("a"));
    assigned.Execute(Anything("b"));
    callback.Execute(Anything("c"));
    EXPECT_EQ(3, recording->calls);
}

TEST(Callback, WithoutAnImplementationBothOperationsThrow)
{
    Callback callback{SmartPointer<CallbackImplementation>()};
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { callback.Execute(Anything("event")); }));
    EXPECT_EQ("Failed to access to nullpointer.", FailureText<ExceptionNullpointer>([&] { callback.IsValid(); }));
    EXPECT_STREQ("Utilities::Callback: no implementation", callback.GetValueString().c_str());
}

TEST(Callback, WhatTheImplementationThrowsPassesThrough)
{
    class Throwing : public CallbackImplementation {
    public:
        long Execute(const Anything&) override
        {
            throw Utilities::ExceptionWrongType("from the callback");
        }
        bool IsValid() const override
        {
            return true;
        }
    };
    Callback callback{SmartPointer<CallbackImplementation>(new Throwing())};
    EXPECT_EQ("from the callback",
              FailureText<Utilities::ExceptionWrongType>([&] { callback.Execute(Anything()); }));
}

} // namespace

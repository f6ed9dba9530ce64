#ifndef QVIMANAGER_TESTS_SUPPORT_FAILURE_TEXT_H
#define QVIMANAGER_TESTS_SUPPORT_FAILURE_TEXT_H

#include "qvimanager/foundation/exception.h"

#include <functional>
#include <string>

namespace TestSupport {

// The text of the exception of class E that `call` raises, or
// "no exception". Any other exception passes through and fails the test.
template <typename E = Utilities::ExceptionOutOfBound>
std::string FailureText(const std::function<void()>& call)
{
    try {
        call();
    } catch (const E& failure) {
        return failure.GetExceptionText();
    }
    return "no exception";
}

} // namespace TestSupport

#endif

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "Exceptions/KestrelException.h"

namespace TestSupport {

/// The sentence of a state that forbids a call.
inline constexpr const char* kTransitionRefused = "State transition not allowed.";

/// Runs @p action, expects exactly an @p Exception and returns a copy of it.
template <typename Exception, typename Action>
Exception expectThrown(Action action) {
    try {
        action();
    } catch (const Exception& exception) {
        EXPECT_EQ(typeid(exception), typeid(Exception)) << exception.what();
        return exception;
    }
    throw std::logic_error("Nothing was thrown.");
}

/// Expects a standard exception of exactly this type and text.
template <typename Exception, typename Action>
void expectStandard(Action action, const std::string& text) {
    EXPECT_EQ(expectThrown<Exception>(action).what(), text);
}

/// Expects an exception of the library with this word, whose description ends in this sentence.
template <typename Exception, typename Action>
Exception expectFailure(Action action, const std::string& word, const std::string& sentence) {
    Exception exception = expectThrown<Exception>(action);
    EXPECT_EQ(exception.who(), word);
    const std::string why = exception.why();
    EXPECT_EQ(why.substr(why.size() - std::min(why.size(), sentence.size())), sentence);
    return exception;
}

/// A failure in one line: word, throwing file and sentence.
inline std::string lineOf(const KestrelExceptions::KestrelException& failure) {
    const std::string where = failure.where();
    const std::size_t begin = std::min(where.find('['), where.size());
    return std::string(failure.who()) + where.substr(begin, where.rfind(']') - begin + 1) + failure.why();
}

/// The exception of an action in one line; only the text of a standard exception.
template <typename Action>
std::string thrownBy(Action action) {
    try {
        action();
    } catch (const KestrelExceptions::KestrelException& failure) {
        return lineOf(failure);
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "nothing";
}

/// The result of thrownBy() for a failure of a property.
inline std::string propertyFailure(const std::string& word, const std::string& className, const std::string& name,
                                   const std::string& sentence) {
    return word + "[Shared/src/Properties/" + className + ".cpp]Error with property {" + name + "}: " + sentence;
}

} // namespace TestSupport

#include "runtime/automation_error.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "fakes/error_number.h"

namespace ostrel {
namespace {

TEST(AutomationError, RaiseCarriesTheStandardDescription) {
    // Log lines and message boxes print these texts word for word.
    const std::pair<int32_t, const char*> cases[] = {
        {457, "This key is already associated with an element of this collection"},
        {1000, "Application-defined or object-defined error"},
        {-1, "Application-defined or object-defined error"},
    };
    for (const auto& [number, text] : cases) {
        const AutomationError e = fakes::errorOf([number = number] { raise(number); });
        EXPECT_EQ(e.number, number);
        EXPECT_EQ(e.description, text);
        EXPECT_STREQ(e.what(), text);
        EXPECT_EQ(e.source, "Ostrel");
    }
}

TEST(AutomationError, CurrentErrorTurnsAnyExceptionIntoAnError) {
    using Error = std::pair<int32_t, std::string>;
    const auto caught = [](auto&& thrower) -> Error {
        try {
            thrower();
        } catch (...) {
            return {currentError().number, currentError().description};
        }
        return {-1, "nothing thrown"};
    };
    EXPECT_EQ(caught([] { raise(457, "[Add] taken"); }), (Error{457, "[Add] taken"}));
    EXPECT_EQ(caught([] { throw std::bad_alloc(); }), (Error{7, "Out of memory"}));
    EXPECT_EQ(caught([] { throw std::runtime_error("boom"); }), (Error{51, "Internal error"}));
    EXPECT_EQ(currentError().number, 0);
}

}  // namespace
}  // namespace ostrel

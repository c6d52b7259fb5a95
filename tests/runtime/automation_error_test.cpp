#include "runtime/automation_error.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace ostrel {
namespace {

TEST(AutomationError, RaiseCarriesTheStandardDescription) {
    // Log lines and message boxes print these texts word for word.
    const std::pair<int32_t, const char*> cases[] = {
        {13, "Type mismatch"},
        {457, "This key is already associated with an element of this collection"},
        {1000, "Application-defined or object-defined error"},
        {-1, "Application-defined or object-defined error"},
    };
    for (const auto& [number, text] : cases) {
        try {
            raise(number);
            FAIL() << "raise returned";
        } catch (const AutomationError& e) {
            EXPECT_EQ(e.number, number);
            EXPECT_EQ(e.description, text);
            EXPECT_STREQ(e.what(), text);
            EXPECT_EQ(e.source, "Ostrel");
        }
    }
}

TEST(AutomationError, CurrentErrorTurnsAnyExceptionIntoAnError) {
    const auto caught = [](auto&& thrower) {
        try {
            thrower();
        } catch (...) {
            return currentError();
        }
        return AutomationError(-1, "nothing thrown");
    };
    const AutomationError own = caught([] { raise(457, "[Add] taken"); });
    EXPECT_EQ(own.number, 457);
    EXPECT_EQ(own.description, "[Add] taken");
    const AutomationError memory = caught([] { throw std::bad_alloc(); });
    EXPECT_EQ(memory.number, 7);
    EXPECT_EQ(memory.description, "Out of memory");
    const AutomationError other = caught([] { throw std::runtime_error("boom"); });
    EXPECT_EQ(other.number, 51);
    EXPECT_EQ(other.description, "Internal error");
    EXPECT_EQ(currentError().number, 0);
}

}  // namespace
}  // namespace ostrel

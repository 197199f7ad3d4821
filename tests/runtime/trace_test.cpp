#include <gtest/gtest.h>

#include <string>

#include "korutil/warning.h"
#include "tests/support/debugger_output.h"

namespace {

using kor::test::DebuggerOutput;

// The output with every duration as 0.
std::string withoutTimes(std::string output) {
    const std::string mark = "(after ";
    for (std::size_t at = output.find(mark); at != std::string::npos; at = output.find(mark, at + 1)) {
        const std::size_t number = at + mark.size();
        output.replace(number, output.find_first_not_of("0123456789", number) - number, "0");
    }
    return output;
}

TEST(Trace, ATextIsFormattedAndSent) {
    DebuggerOutput output;
    dbgPrint("%s %d%%\n", "done", 50);
    dbgPrint("%n not sent\n");
    dbgPrint("%s", std::string(9000, 'x').c_str());
    EXPECT_EQ(output.take(), "done 50%\n" + std::string(8191, 'x'));
}

TEST(Trace, FunctionsAreIndentedByTheirDepth) {
    DebuggerOutput output;
    {
        int result = 1;
        const CDebugFknOutput outer("outer", &result, 0);
        EXPECT_EQ(CDebugFknOutput::m_iFuncStackCounter, 1);
        {
            const CDebugFknOutput silent("silent", &result, 1);
            EXPECT_EQ(CDebugFknOutput::m_iFuncStackCounter, 1);
            const CDebugFknOutput inner("inner", nullptr, 0);
            EXPECT_EQ(CDebugFknOutput::m_iFuncStackCounter, 2);
        }
        result = -7;
    }
    EXPECT_EQ(CDebugFknOutput::m_iFuncStackCounter, 0);
    EXPECT_EQ(withoutTimes(output.take()),
              "outer()...\n"
              "  inner()...\n"
              "  inner() returns (after 0ms)\n"
              "outer() returns -7 (after 0ms)\n");
}

TEST(Trace, OfANameFiftyCharactersAreKept) {
    for (const std::size_t length : {50u, 51u}) {
        DebuggerOutput output;
        const std::string name(length, 'n');
        { const CDebugFknOutput trace(name.c_str(), nullptr, 0); }
        const std::string kept = name.substr(0, 50);
        EXPECT_EQ(withoutTimes(output.take()), kept + "()...\n" + kept + "() returns (after 0ms)\n");
    }
    DebuggerOutput output;
    { const CDebugFknOutput trace(nullptr, nullptr, 0); }
    EXPECT_EQ(withoutTimes(output.take()), "()...\n() returns (after 0ms)\n");
}

}  // namespace

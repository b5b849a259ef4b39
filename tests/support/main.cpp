// The test programs' own `main`: the library exports one too, and a program that picked that one up
// would run no test and exit with 0.
#include "patience.h"

#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    irmtest::losePatienceAfter(600);
    const int failed = RUN_ALL_TESTS();
    if (testing::GTEST_FLAG(list_tests))
        return failed;
    if (testing::UnitTest::GetInstance()->test_to_run_count() == 0) {
        std::fputs("no test ran\n", stderr);
        return 1;
    }
    return failed;
}

#include "vek/os/entry_name.h"

#include <gtest/gtest.h>

namespace {

using vek::os::leadsToItself;

TEST(LeadsToItself, IsTrueForOrdinaryNames) {
    for (const char* name :
         {"a", "a.txt", ".hidden", "..a", "a b", "a~1", "(a)", "\xE4", "%a%", "a;b"}) {
        EXPECT_TRUE(leadsToItself(name)) << name;
    }
}

TEST(LeadsToItself, IsFalseForCharactersThatNoNameCanHave) {
    for (const char* name : {"..\\x", "a/b", "a:b", "?", "a*", "\"a", "<", ">", "a|b"}) {
        EXPECT_FALSE(leadsToItself(name)) << name;
    }
}

TEST(LeadsToItself, IsFalseForWhatTheSystemCuts) {
    for (const char* name : {"a.", "a ", "...", ".. ", "a. "}) {
        EXPECT_FALSE(leadsToItself(name)) << name;
    }
}

}  // namespace

#include "tools/log_application/show/text_table.h"

#include <sstream>

#include <gtest/gtest.h>

namespace {

using log_application::TextTable;

TEST(TextTable, MakesColumnsAsWideAsTheirWidestCell) {
    TextTable table;
    table.add({"NAME", "PID", "X"});
    table.add({"a", "4242", ""});
    table.add({"longer", "1", "y"});
    std::ostringstream stream;
    table.write(stream, "> ");
    EXPECT_EQ(stream.str(), "> NAME    PID   X\n> a       4242\n> longer  1     y\n");
}

TEST(TextTable, EscapesControlCharacters) {
    TextTable table;
    table.add({"a\nb", "c"});
    std::ostringstream stream;
    table.write(stream);
    EXPECT_EQ(stream.str(), "a\\nb  c\n");
}

}  // namespace

#include "vek/auxiliary/ini_reader.h"

#include <chrono>
#include <random>

#include <gtest/gtest.h>

#include "tests/support/processor_time.h"
#include "tests/vek/temporary_directory.h"
#include "vek/base/text.h"
#include "vek/exception.h"

namespace {

using vek::aux::IniReader;
using Entries = IniReader::Entries;

Entries entriesOf(const std::vector<std::string>& lines) {
    IniReader reader;
    for (const std::string& line : lines) {
        EXPECT_TRUE(reader.processLine(line)) << line;
    }
    return reader.entries();
}

TEST(IniReader, BlanksAndCommentsMakeNoDifference) {
    EXPECT_EQ(entriesOf({"a=b"}), (Entries{{"a", "b"}}));
    EXPECT_EQ(entriesOf({"  a  =  b  # note"}), (Entries{{"a", "b"}}));
    EXPECT_EQ(entriesOf({"\ta\t=\tb c\t"}), (Entries{{"a", "b c"}}));
}

TEST(IniReader, CommentStartsWhereverTheSignStands) {
    EXPECT_EQ(entriesOf({"#a=b", "a=b#c", "c=#d", "#"}), (Entries{{"a", "b"}}));
    EXPECT_EQ(entriesOf({"a=\"b#c\""}), (Entries{{"a", "\"b"}}));
}

TEST(IniReader, EmptyFieldBetweenTwoSignsIsDropped) {
    EXPECT_EQ(entriesOf({"a==b"}), (Entries{{"a", "b"}}));
    EXPECT_EQ(entriesOf({"=a=b="}), (Entries{{"a", "b"}}));
    EXPECT_EQ(entriesOf({"a= =b"}), (Entries{{"a", "b"}}));
}

TEST(IniReader, IgnoresWhatIsNoPair) {
    EXPECT_EQ(entriesOf({"", "   ", "a", "a=", "=b", "a=b=c", "[section]", "="}), Entries{});
}

TEST(IniReader, LaterLineWinsWhateverItsCase) {
    EXPECT_EQ(entriesOf({"A=1", "a=2"}), (Entries{{"a", "2"}}));
    EXPECT_EQ(entriesOf({"Key=1", "KEY=2", "kEy=3"}), (Entries{{"kEy", "3"}}));
}

TEST(IniReader, LaterLineMovesItsKeyToTheEnd) {
    EXPECT_EQ(entriesOf({"a=1", "b=2", "a=3"}), (Entries{{"b", "2"}, {"a", "3"}}));
}

TEST(IniReader, TakesLongLines) {
    const std::string value(1 << 20, 'v');
    EXPECT_EQ(entriesOf({"a=" + value}), (Entries{{"a", value}}));
    EXPECT_EQ(entriesOf({std::string(1 << 20, '=')}), Entries{});
}

TEST(IniReader, TakesAnyBytesInAValue) {
    EXPECT_EQ(entriesOf({"a=\xE4\xFF\x01"}), (Entries{{"a", "\xE4\xFF\x01"}}));
    EXPECT_EQ(entriesOf({std::string("a=x\0y", 5)}), (Entries{{"a", std::string("x\0y", 3)}}));
}

class IniReaderFile : public vek::test::TemporaryDirectoryTest {};

TEST_F(IniReaderFile, ReadsAllLinesOfAFile) {
    writeFile("x.ini", "# head\r\na = 1\r\n\r\nb = 2");
    IniReader reader;
    reader.read(path("x.ini"));
    EXPECT_EQ(reader.entries(), (Entries{{"a", "1"}, {"b", "2"}}));
}

TEST_F(IniReaderFile, MissingFileThrowsAndKeepsWhatWasRead) {
    IniReader reader;
    reader.processLine("a=1");
    EXPECT_THROW(reader.read(path("none.ini")), vek::NoSuchFileError);
    EXPECT_EQ(reader.entries(), (Entries{{"a", "1"}}));
}

// What the reader promises of keys that come again, in its simplest form.
void setOneByOne(Entries& entries, const std::string& key, const std::string& value) {
    const auto folded = [](std::string text) { return vek::toLower(text); };
    entries.remove_if([&](const auto& entry) { return folded(entry.first) == folded(key); });
    entries.emplace_back(key, value);
}

TEST(IniReader, KeepsTheOrderThatTheSimpleWayGives) {
    std::minstd_rand random(1);
    const auto below = [&](unsigned end) { return static_cast<unsigned>(random() % end); };
    for (int round = 0; round < 2000; ++round) {
        IniReader reader;
        Entries expected;
        for (unsigned line = below(40); line > 0; --line) {
            std::string key;
            for (unsigned left = below(2) + 1; left > 0; --left) {
                key += "aAbB"[below(4)];
            }
            const std::string value = std::to_string(line);
            reader.processLine(key + "=" + value);
            setOneByOne(expected, key, value);
        }
        ASSERT_EQ(reader.entries(), expected) << round;
    }
}

TEST(IniReader, ReadsManyRepeatedKeysInNoTime) {
    const support::ProcessorTime time;
    IniReader reader;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 20000; ++i) {
            reader.processLine("key" + std::to_string(i) + "=" + std::to_string(round));
        }
    }
    EXPECT_EQ(reader.entries().size(), 20000u);
    EXPECT_EQ(reader.entries().front().second, "1");
    // It took more than ten seconds when each line went through all entries.
    EXPECT_LT(time.used(), std::chrono::seconds(5));
}

}  // namespace

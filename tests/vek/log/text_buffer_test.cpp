#include "vek/log/text_buffer.h"

#include <ostream>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace {

using vek::log::TextBuffer;

TEST(TextBuffer, IsEmptyAtFirstAndAfterClear) {
    TextBuffer buffer;
    EXPECT_EQ(buffer.view(), "");
    std::ostream stream(&buffer);
    stream << "text";
    EXPECT_EQ(buffer.view(), "text");
    buffer.clear();
    EXPECT_EQ(buffer.view(), "");
    stream << std::string(5000, 'x');
    buffer.clear();
    stream << 'y';
    EXPECT_EQ(buffer.view(), "y");
}

TEST(TextBuffer, GrowsByCharactersAndByTexts) {
    TextBuffer buffer;
    std::ostream stream(&buffer);
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        stream.put(static_cast<char>(i));
        expected += static_cast<char>(i);
    }
    stream << expected << std::flush;
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(buffer.view(), expected + expected);
}

TEST(TextBuffer, PositionIsThatOfAStringBuffer) {
    TextBuffer buffer;
    std::ostream ours(&buffer);
    std::stringbuf strings(std::ios_base::out);
    std::ostream theirs(&strings);
    std::mt19937 random(1);
    for (int i = 0; i < 20'000; ++i) {
        const unsigned action = random() % 8;
        const int offset = static_cast<int>(random() % 60) - 20;
        const std::string text(random() % 12, static_cast<char>('a' + random() % 26));
        for (std::ostream* const stream : {&ours, &theirs}) {
            stream->clear();
            switch (action) {
                case 0:
                    stream->seekp(offset);
                    break;
                case 1:
                    stream->seekp(offset, std::ios_base::cur);
                    break;
                case 2:
                    stream->seekp(-offset, std::ios_base::end);
                    break;
                default:
                    *stream << text;
            }
        }
        ASSERT_EQ(ours.rdstate(), theirs.rdstate()) << i << " " << action << " " << offset;
        ours.clear();
        theirs.clear();
        ASSERT_EQ(ours.tellp(), theirs.tellp()) << i << " " << action << " " << offset;
        ASSERT_EQ(buffer.view(), strings.str());
        if (i % 100 == 99) {
            buffer.clear();
            strings.str("");
        }
    }
}

TEST(TextBuffer, CannotBeReadNorMovedBeyondItsText) {
    TextBuffer buffer;
    std::iostream stream(&buffer);
    stream << "text";
    EXPECT_EQ(stream.get(), EOF);
    stream.clear();
    EXPECT_EQ(buffer.pubseekoff(0, std::ios_base::cur, std::ios_base::in), -1);
    EXPECT_EQ(buffer.pubseekoff(1, std::ios_base::end), -1);
    EXPECT_EQ(buffer.pubseekoff(INT64_MAX, std::ios_base::end), -1);
    EXPECT_EQ(buffer.pubseekoff(INT64_MIN, std::ios_base::cur), -1);
    EXPECT_EQ(buffer.pubseekpos(-1), -1);
    EXPECT_EQ(buffer.view(), "text");
}

}  // namespace

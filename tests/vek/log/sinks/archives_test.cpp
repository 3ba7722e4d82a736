#include "vek/log/sinks/archives.h"

#include <limits>
#include <map>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "vek/exception.h"

namespace {

using vek::log::archiveName;
using vek::log::archiveNumber;
using vek::log::archivePattern;
using vek::log::archivesByNumber;
using vek::log::isCompressedArchive;

TEST(ArchiveName, IsPathOldNumberAndGzJoinedByDots) {
    EXPECT_EQ(archiveName("x.log", 1, false), "x.log.old.1");
    EXPECT_EQ(archiveName("x.log", 1, true), "x.log.old.1.gz");
    EXPECT_EQ(archiveName("C:\\a.b\\x", 4294967295u, true), "C:\\a.b\\x.old.4294967295.gz");
}

TEST(ArchiveName, PatternHasAStarInThePlaceOfTheNumber) {
    EXPECT_EQ(archivePattern("C:\\a.b\\x.log"), "C:\\a.b\\x.log.old.*");
    // The archives' names come with backslashes.
    EXPECT_EQ(archivePattern("C:/a/x.log"), "C:\\a\\x.log.old.*");
}

TEST(ArchiveName, IsCompressedIfItEndsInGzWithADotOrWithout) {
    EXPECT_TRUE(isCompressedArchive("x.log.old.1.gz"));
    EXPECT_TRUE(isCompressedArchive("x.log.old.gz"));
    EXPECT_TRUE(isCompressedArchive("x.loggz"));
    EXPECT_TRUE(isCompressedArchive("gz"));
    EXPECT_FALSE(isCompressedArchive("x.log.old.1"));
    EXPECT_FALSE(isCompressedArchive("x.log.old.1.gZ"));
    EXPECT_FALSE(isCompressedArchive("x.log.old.1.gz.bak"));
    EXPECT_FALSE(isCompressedArchive("z"));
    EXPECT_FALSE(isCompressedArchive(""));
}

TEST(ArchiveNumber, IsTheLastPieceBehindOld) {
    EXPECT_EQ(archiveNumber("x.log.old.1"), 1u);
    EXPECT_EQ(archiveNumber("x.log.old.12.gz"), 12u);
    EXPECT_EQ(archiveNumber("C:\\dir\\x.old.3"), 3u);
    EXPECT_EQ(archiveNumber("x.old.3"), 3u) << "a log file without an extension";
    EXPECT_EQ(archiveNumber("x.log.old.0"), 0u);
    EXPECT_EQ(archiveNumber("x.log.old.0010"), 10u) << "decimal, whatever zeros stand ahead";
}

TEST(ArchiveNumber, IsThereForNoOtherFile) {
    for (const char* const path : {"x.log.old.abc",
                                   "x.log.old.1.txt",
                                   "x.log.old.1.gz.bak",
                                   "x.log.old.",
                                   "x.log.old.gz",
                                   "x.log.old",
                                   "x.log.old.1a",
                                   "x.log.old.+1",
                                   "x.log.old.-1",
                                   "x.log.old. 1",
                                   "x.log.old.1 ",
                                   "x.log.old.0x1",
                                   "x.log.OLD.1",
                                   "x.log.old.1.GZ",
                                   "x.log.old.1.gz.gz",
                                   "x.log.older.1",
                                   "x.log.1",
                                   "1",
                                   "",
                                   ".",
                                   "gz",
                                   ".gz"}) {
        EXPECT_EQ(archiveNumber(path), std::nullopt) << path;
    }
}

TEST(ArchiveNumber, NeedsThreePieces) {
    EXPECT_EQ(archiveNumber("old.1"), std::nullopt);
    EXPECT_EQ(archiveNumber(".old.1"), std::nullopt);
    EXPECT_EQ(archiveNumber("old.1.gz"), std::nullopt);
    EXPECT_EQ(archiveNumber("x.old.1.gz"), 1u);
}

TEST(ArchiveNumber, TakesRepeatedDotsAsOneAndDropsThoseAtTheEnds) {
    EXPECT_EQ(archiveNumber("..x..log...old..7."), 7u);
    EXPECT_EQ(archiveNumber("x.log.old.7..gz."), 7u);
}

TEST(ArchiveNumber, CountsTheDotsOfDirectories) {
    EXPECT_EQ(archiveNumber("C:\\v1.old.2\\x.log.old.5"), 5u);
    EXPECT_EQ(archiveNumber("C:\\v1.2\\old.5"), std::nullopt) << "the piece is 2\\old";
    EXPECT_EQ(archiveNumber("C:\\v1.2\\x.old.5"), 5u);
    EXPECT_EQ(archiveNumber("v.\\x.old.5.gz"), 5u);
    EXPECT_EQ(archiveNumber("\\.old.5"), 5u) << "the first piece is a directory's";
}

TEST(ArchiveNumber, HasAtMost32Bits) {
    EXPECT_EQ(archiveNumber("x.log.old.4294967295"), std::numeric_limits<std::uint32_t>::max());
    EXPECT_EQ(archiveNumber("x.log.old.000000000004294967295.gz"),
              std::numeric_limits<std::uint32_t>::max());
    for (const char* const path : {"x.log.old.4294967296", "x.log.old.4294967296.gz",
                                   "x.log.old.99999999999999999999999999"}) {
        EXPECT_THROW(archiveNumber(path), std::out_of_range) << path;
    }
    try {
        archiveNumber("x.log.old.4294967296");
    } catch (const vek::Exception&) {
        ADD_FAILURE() << "a vek::Exception";
    } catch (const std::exception&) {
    }
}

TEST(ArchivesByNumber, AreOrderedByTheirNumbersNotTheirNames) {
    EXPECT_EQ(archivesByNumber({"x.log.old.10", "x.log.old.9.gz", "x.log.old.abc", "x.log.old.2"}),
              (std::map<std::uint32_t, std::string>{
                  {2, "x.log.old.2"}, {9, "x.log.old.9.gz"}, {10, "x.log.old.10"}}));
    EXPECT_TRUE(archivesByNumber({}).empty());
}

TEST(ArchivesByNumber, KeepTheFirstOfTwoWithOneNumber) {
    EXPECT_EQ(archivesByNumber({"x.log.old.2", "x.log.old.2.gz"}),
              (std::map<std::uint32_t, std::string>{{2, "x.log.old.2"}}));
    EXPECT_EQ(archivesByNumber({"x.log.old.2.gz", "x.log.old.02", "x.log.old.2"}),
              (std::map<std::uint32_t, std::string>{{2, "x.log.old.2.gz"}}));
}

TEST(ArchivesByNumber, FailForOneNumberBeyond32Bits) {
    EXPECT_THROW(archivesByNumber({"x.log.old.1", "x.log.old.4294967296"}), std::out_of_range);
    EXPECT_EQ(archivesByNumber({"x.log.old.4294967296.txt"}).size(), 0u) << "no archive at all";
}

}  // namespace

#include "vek/fs/move.h"

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "tests/vek/fs/other_volume.h"
#include "vek/exception.h"
#include "vek/fs/operations.h"

namespace {

using vek::fs::exists;
using vek::fs::moveAnywhere;
using vek::fs::overwriteTarget;
using vek::test::codeThrownBy;

class MoveTest : public vek::test::TwoVolumesTest {
  protected:
    static std::string contents(const std::string& file) {
        std::ostringstream all;
        all << std::ifstream(file, std::ios::binary).rdbuf();
        return all.str();
    }
    static void write(const std::string& file, const std::string& text) {
        std::ofstream(file, std::ios::binary) << text;
    }

    // The cause of the RuntimeError that `f` throws, which must be exactly an `Expected`, by its
    // number; 0 and a failure otherwise.
    template <class Expected, class F>
    static std::uint32_t causeThrownBy(F f) {
        try {
            f();
            ADD_FAILURE() << "nothing thrown";
        } catch (const vek::RuntimeError& error) {
            EXPECT_EQ(typeid(error), typeid(vek::RuntimeError));
            const auto* cause = dynamic_cast<const Expected*>(error.getCause());
            if (cause != nullptr && typeid(*cause) == typeid(Expected)) {
                return cause->osError().code();
            }
            ADD_FAILURE() << error.what();
        }
        return 0;
    }
};

TEST_F(MoveTest, RenamesFilesAndDirectories) {
    writeFile("x", "text");
    vek::fs::move(path("x"), path("y"));
    EXPECT_EQ(readFile("y"), "text");
    EXPECT_FALSE(exists(path("x")));
    vek::fs::createDirectory(path("d"));
    writeFile("d\\z", "inside");
    vek::fs::move(path("d"), path("e"), 0);
    EXPECT_EQ(readFile("e\\z"), "inside");
}

TEST_F(MoveTest, ExistingTargetIsReplacedWithItsOptionOnly) {
    writeFile("x", "new");
    writeFile("y", "old");
    for (const std::uint32_t options : {0u, 1u, 2u, 3u}) {
        EXPECT_EQ(
            causeThrownBy<vek::FsError>([&] { vek::fs::move(path("x"), path("y"), options); }),
            183u)
            << options;
    }
    EXPECT_EQ(readFile("y"), "old");
    vek::fs::move(path("x"), path("y"), overwriteTarget);
    EXPECT_EQ(readFile("y"), "new");
    EXPECT_FALSE(exists(path("x")));
}

TEST_F(MoveTest, FailureTellsBothPathsAndItsCause) {
    try {
        vek::fs::move(path("none"), path("y"));
        ADD_FAILURE();
    } catch (const vek::RuntimeError& error) {
        EXPECT_EQ(error.description(), "Error while moving " + path("none") + " -> " + path("y"));
        EXPECT_EQ(error.what(), "Error while moving " + path("none") + " -> " + path("y") + ": " +
                                    vek::FsError(path("none"), 2).what());
    }
    EXPECT_EQ(causeThrownBy<vek::FsError>([&] { vek::fs::move(path("none"), path("y")); }), 2u);
}

TEST_F(MoveTest, AcrossVolumesFailsWithTheWrappedError) {
    writeFile("x", "text");
    EXPECT_EQ(
        causeThrownBy<vek::NotSameDeviceError>([&] { vek::fs::move(path("x"), otherPath("x")); }),
        17u);
    EXPECT_EQ(causeThrownBy<vek::NotSameDeviceError>(
                  [&] { vek::fs::move(path("x"), otherPath("x"), overwriteTarget); }),
              17u);
    try {
        vek::fs::move(path("x"), otherPath("x"));
    } catch (const vek::RuntimeError& error) {
        const std::string text = error.what();
        const std::string cause = vek::NotSameDeviceError(path("x"), 17).what();
        EXPECT_TRUE(text.starts_with("Error while moving ")) << text;
        EXPECT_TRUE(text.ends_with(": " + cause)) << text;
        EXPECT_TRUE(text.ends_with("(17)")) << text;
    }
    EXPECT_EQ(readFile("x"), "text");
    EXPECT_FALSE(exists(otherPath("x")));
}

TEST_F(MoveTest, ZeroByteIsRefusedInEitherPath) {
    const std::string hostile("C:\\a\0b", 6);
    writeFile("x", "text");
    EXPECT_EQ(causeThrownBy<vek::FsError>([&] { vek::fs::move(hostile, path("y")); }), 123u);
    EXPECT_EQ(causeThrownBy<vek::FsError>([&] { vek::fs::move(path("x"), hostile); }), 123u);
    EXPECT_EQ(readFile("x"), "text");
}

TEST_F(MoveTest, AnywhereRenamesOnOneVolume) {
    writeFile("x", "text");
    moveAnywhere(path("x"), path("y"));
    EXPECT_EQ(readFile("y"), "text");
    EXPECT_FALSE(exists(path("x")));
    vek::fs::createDirectory(path("d"));
    writeFile("d\\z", "inside");
    moveAnywhere(path("d"), path("e"));
    EXPECT_EQ(readFile("e\\z"), "inside");
}

TEST_F(MoveTest, AnywhereMovesFilesAcrossVolumesAndBack) {
    const std::string text(200000, 't');
    writeFile("x", text);
    moveAnywhere(path("x"), otherPath("x"));
    EXPECT_EQ(contents(otherPath("x")), text);
    EXPECT_FALSE(exists(path("x")));
    moveAnywhere(otherPath("x"), path("y"));
    EXPECT_EQ(readFile("y"), text);
    EXPECT_FALSE(exists(otherPath("x")));
}

TEST_F(MoveTest, AnywhereReplacesAcrossVolumesWithItsOptionOnly) {
    writeFile("x", "new");
    write(otherPath("x"), "the old one");
    EXPECT_THROW(moveAnywhere(path("x"), otherPath("x")), vek::Exception);
    EXPECT_EQ(contents(otherPath("x")), "the old one");
    EXPECT_EQ(readFile("x"), "new");
    moveAnywhere(path("x"), otherPath("x"), overwriteTarget);
    EXPECT_EQ(contents(otherPath("x")), "new");
    EXPECT_FALSE(exists(path("x")));
}

TEST_F(MoveTest, AnywhereCantMoveADirectoryAcrossVolumes) {
    vek::fs::createDirectory(path("d"));
    EXPECT_EQ(codeThrownBy<vek::FileAccessError>([&] { moveAnywhere(path("d"), otherPath("d")); }),
              5u);
    EXPECT_TRUE(exists(path("d")));
    EXPECT_FALSE(exists(otherPath("d")));
}

TEST_F(MoveTest, AnywhereLeavesTheTargetAloneIfTheSourceCantBeOpened) {
    writeFile("x", "new");
    write(otherPath("x"), "theirs");
    const HANDLE held =
        CreateFileA(path("x").c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_EQ(codeThrownBy<vek::FsError>(
                  [&] { moveAnywhere(path("x"), otherPath("x"), overwriteTarget); }),
              static_cast<std::uint32_t>(ERROR_SHARING_VIOLATION));
    CloseHandle(held);
    EXPECT_EQ(contents(otherPath("x")), "theirs");
}

TEST_F(MoveTest, AnywhereRemovesACopyThatFailsHalfWay) {
    EXPECT_THROW(moveAnywhere(unreadableFile, path("y")), vek::OsError);
    EXPECT_FALSE(exists(path("y")));
    EXPECT_TRUE(exists(unreadableFile));
    writeFile("y", "old");
    EXPECT_THROW(moveAnywhere(unreadableFile, path("y"), overwriteTarget), vek::OsError);
    EXPECT_FALSE(exists(path("y")));
}

TEST_F(MoveTest, AnywhereNeedsASource) {
    EXPECT_EQ(codeThrownBy<vek::NoSuchFileError>([&] { moveAnywhere(path("none"), path("y")); }),
              2u);
}

TEST_F(MoveTest, AnywherePassesOtherFailuresOfMovingOn) {
    writeFile("x", "new");
    writeFile("y", "old");
    EXPECT_EQ(causeThrownBy<vek::FsError>([&] { moveAnywhere(path("x"), path("y")); }), 183u);
    EXPECT_EQ(readFile("y"), "old");
}

TEST_F(MoveTest, AnywhereThatCantRemoveTheSourceKeepsBoth) {
    writeFile("x", "text");
    SetFileAttributesA(path("x").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(codeThrownBy<vek::FsError>([&] { moveAnywhere(path("x"), otherPath("x")); }), 5u);
    SetFileAttributesA(path("x").c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(readFile("x"), "text");
    EXPECT_EQ(contents(otherPath("x")), "text");
}

}  // namespace

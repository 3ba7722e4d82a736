// Paths that nobody means well by, for every operation: an exception of the framework or a result,
// and nothing lost.
#include <functional>

#include <gtest/gtest.h>

#include "tests/vek/temporary_directory.h"
#include "vek/exception.h"
#include "vek/fs/copier.h"
#include "vek/fs/current_directory.h"
#include "vek/fs/dir.h"
#include "vek/fs/directories.h"
#include "vek/fs/find_in_path.h"
#include "vek/fs/format_file.h"
#include "vek/fs/glob.h"
#include "vek/fs/move.h"
#include "vek/fs/path_text.h"
#include "vek/fs/temporary.h"

namespace {

class HostilePathTest : public vek::test::TemporaryDirectoryTest {
  protected:
    HostilePathTest() {
        vek::fs::createDirectories(path("victim\\sub"));
        writeFile("victim\\file", "text");
        writeFile("victim\\sub\\file", "text");
        vek::fs::changeDirectory(path("victim"));
    }
    ~HostilePathTest() override { vek::fs::changeDirectory(before); }

    void expectAllThere(const std::string& hostile) const {
        EXPECT_EQ(readFile("victim\\file"), "text") << hostile;
        EXPECT_EQ(readFile("victim\\sub\\file"), "text") << hostile;
    }

  private:
    std::string before = vek::fs::currentDirectory();
};

// True if `f` throws an exception of the framework.
bool fails(const std::function<void()>& f) {
    try {
        f();
        return false;
    } catch (const vek::Exception& error) {
        EXPECT_STRNE(error.what(), "");
        return true;
    }
}

std::vector<std::function<void(const std::string&)>> operations() {
    namespace fs = vek::fs;
    return {
        [](const std::string& p) { fs::changeDirectory(p); },
        [](const std::string& p) { fs::stat(p); },
        [](const std::string& p) { fs::removeFile(p); },
        [](const std::string& p) { fs::removeDirectory(p); },
        [](const std::string& p) { fs::remove(p); },
        [](const std::string& p) { fs::createDirectory(p); },
        [](const std::string& p) { fs::createDirectories(p); },
        [](const std::string& p) { fs::removeTree(p); },
        [](const std::string& p) { fs::move(p, "to"); },
        [](const std::string& p) { fs::move("file", p); },
        [](const std::string& p) { fs::moveAnywhere(p, "to"); },
        [](const std::string& p) { fs::moveAnywhere("file", p, fs::overwriteTarget); },
        [](const std::string& p) { fs::File().open(p, fs::Access::write, fs::replace); },
        [](const std::string& p) { fs::Copier(fs::overwriteTarget).copy(p, "to"); },
        [](const std::string& p) { fs::Copier(fs::overwriteTarget).copy("file", p); },
        [](const std::string& p) { vek::formatFile(p, "to", {}); },
        [](const std::string& p) { vek::formatFile("file", p, {}); },
    };
}

TEST_F(HostilePathTest, IsRefusedByEveryOperationAndLosesNothing) {
    const std::string zero(1, '\0');
    for (const std::string& hostile :
         {std::string(), zero, "file" + zero, "sub" + zero + "x", path("victim\\file") + zero + "x",
          std::string(32000, 'a'), path(std::string(32000, 'b')), std::string("a|b"),
          std::string("*"), std::string("?ile"), std::string("\\\\server\\share"),
          std::string("\\\\server\\share\\x"), std::string("Q:x\\y"), std::string("Q:\\x\\y"),
          std::string("none\\x|y\\"), std::string("file\\x|y")}) {
        for (std::size_t i = 0; i < operations().size(); ++i) {
            EXPECT_TRUE(fails([&] { operations()[i](hostile); })) << i << " " << hostile;
            expectAllThere(hostile);
        }
        EXPECT_FALSE(vek::fs::isRegularFile(hostile)) << hostile;
        fails([&] { vek::fs::exists(hostile); });
        fails([&] { vek::fs::glob(hostile, true); });
        fails([&] { vek::fs::expand(hostile); });
        fails([&] { vek::fs::findInPath(hostile); });
        fails([&] { vek::fs::ensureDirectories(hostile); });
        expectAllThere(hostile);
    }
}

// Drive-relative paths, slashes, and the dots and blanks that the system drops, are the system's
// to understand: each of these names the file at hand.
TEST_F(HostilePathTest, OtherSpellingsAreTheSystemsToUnderstand) {
    for (const std::string& spelled :
         {path().substr(0, 2) + "file", std::string("./file"), std::string(".//file"),
          std::string("sub/../file"), path("victim") + "/file", std::string("FILE")}) {
        EXPECT_TRUE(vek::fs::isRegularFile(spelled)) << spelled;
        vek::fs::StreamFile file;
        EXPECT_NO_THROW(file.open(spelled, vek::fs::Access::read)) << spelled;
    }
}

}  // namespace

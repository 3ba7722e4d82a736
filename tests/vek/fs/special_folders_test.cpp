#include "vek/fs/special_folders.h"

#include <gtest/gtest.h>

#include "tests/support/thrown.h"
#include "vek/base/environment.h"
#include "vek/base/windows.h"
#include "vek/exception.h"
#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"

namespace {

using vek::test::codeThrownBy;
using vek::test::textThrownBy;

void expectDirectory(const std::string& path) {
    EXPECT_TRUE(vek::fs::isAbsolute(path)) << path;
    EXPECT_FALSE(path.ends_with('\\')) << path;
    EXPECT_TRUE(vek::fs::stat(path).isDirectory()) << path;
}

std::string variable(const char* name) {
    std::string value;
    vek::getEnv(name, value);
    return value;
}

TEST(SpecialFolders, AreThoseOfTheSystem) {
    expectDirectory(vek::fs::commonAppData());
    expectDirectory(vek::fs::profileDirectory());
    EXPECT_EQ(vek::fs::commonAppData(), variable("ProgramData"));
    EXPECT_EQ(vek::fs::profileDirectory(), variable("USERPROFILE"));
}

// Where the registry says that the user's documents are, set to `directory` meanwhile.
class PersonalFolderSetting {
  public:
    explicit PersonalFolderSetting(const std::string& directory) {
        RegOpenKeyExA(HKEY_CURRENT_USER,
                      "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                      0, KEY_QUERY_VALUE | KEY_SET_VALUE, &key);
        EXPECT_EQ(RegQueryValueExA(key, "Personal", nullptr, &type, before, &size), 0);
        set(REG_SZ, directory.c_str(), directory.size() + 1);
    }
    ~PersonalFolderSetting() {
        set(type, before, size);
        RegCloseKey(key);
    }

  private:
    void set(DWORD newType, const void* value, std::size_t length) {
        EXPECT_EQ(RegSetValueExA(key, "Personal", 0, newType, static_cast<const BYTE*>(value),
                                 static_cast<DWORD>(length)),
                  0);
    }

    HKEY key = nullptr;
    DWORD type = 0;
    BYTE before[1024] = {};
    DWORD size = sizeof before;
};

// One test, as the setting is shared by all that run meanwhile.
TEST(SpecialFolders, PersonalDirectoryIsTheOneThatIsSetAndHasToExist) {
    expectDirectory(vek::fs::personalDirectory());
    EXPECT_EQ(vek::fs::dirLength(vek::fs::personalDirectory()),
              vek::fs::profileDirectory().size() + 1);
    {
        const PersonalFolderSetting root("C:\\windows\\");
        EXPECT_EQ(vek::fs::personalDirectory(), "C:\\windows");
    }
    {
        const PersonalFolderSetting nowhere("C:\\vek-nowhere");
        EXPECT_THROW(vek::fs::personalDirectory(), vek::OsError);
    }
    expectDirectory(vek::fs::personalDirectory());
}

class TemporaryDirectoryVariable : public testing::Test {
  protected:
    ~TemporaryDirectoryVariable() override { vek::setEnv("TMP", before); }

    std::string before = variable("TMP");
};

TEST_F(TemporaryDirectoryVariable, IsFollowedWithoutItsTrailingSeparators) {
    vek::setEnv("TMP", "C:\\windows");
    EXPECT_EQ(vek::fs::temporaryDirectory(), "C:\\windows");
    vek::setEnv("TMP", "C:\\windows\\\\");
    EXPECT_EQ(vek::fs::temporaryDirectory(), "C:\\windows");
    vek::setEnv("TMP", "C:\\");
    EXPECT_EQ(vek::fs::temporaryDirectory(), "C:\\");
}

TEST_F(TemporaryDirectoryVariable, TooLongADirectoryIsAnOsError) {
    vek::setEnv("TMP", "C:\\" + std::string(300, 'a'));
    EXPECT_THROW(vek::fs::temporaryDirectory(), vek::OsError);
}

TEST(SpecialFolders, OthersAreNotImplemented) {
    EXPECT_EQ(textThrownBy<vek::RuntimeError>([] { vek::fs::runtimeDirectory(); }),
              "not implemented");
    EXPECT_EQ(textThrownBy<vek::RuntimeError>([] { vek::fs::cacheDirectory(); }),
              "not implemented");
}

}  // namespace

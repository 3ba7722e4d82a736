#include "vek/registry.h"

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/open_handles.h"
#include "tests/vek/registry_fixture.h"

namespace {

using vek::RegistryKey;
using vek::RegistryOsError;
using vek::RegistryValue;
using vek::test::expectRegistryError;
using Names = std::list<std::string>;

static_assert(!std::is_copy_constructible_v<RegistryKey>);
static_assert(!std::is_copy_assignable_v<RegistryKey>);

constexpr int READ = RegistryKey::READ;
constexpr int WRITE = RegistryKey::WRITE;
constexpr int CREATE = RegistryKey::CREATE;

class Registry : public vek::test::RegistryTest {};

bool isOpen(HKEY key) {
    return RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr, nullptr) != ERROR_INVALID_HANDLE;
}

RegistryValue textValue(const std::string& text) {
    RegistryValue value;
    value.type = RegistryValue::TYPE_STRING;
    value.strings = {text};
    return value;
}

TEST(RegistryKey, FlagsHaveTheirNumbers) {
    EXPECT_EQ(READ, 1);
    EXPECT_EQ(WRITE, 2);
    EXPECT_EQ(CREATE, 4);
}

TEST(RegistryKey, FlagsGiveTheRights) {
    EXPECT_EQ(RegistryKey::accessMask(READ, 0), 0x20019u);
    EXPECT_EQ(RegistryKey::accessMask(READ | CREATE, 0), 0x2001Bu);
    EXPECT_EQ(RegistryKey::accessMask(CREATE, 0), 3u);
    EXPECT_EQ(RegistryKey::accessMask(0, 0), 0u);
    EXPECT_EQ(RegistryKey::accessMask(READ | WRITE, 0), 0x2001Fu);
    EXPECT_EQ(RegistryKey::accessMask(READ | WRITE | CREATE, 0), 0x2001Fu);
    EXPECT_EQ(RegistryKey::accessMask(WRITE | CREATE, 0), 0x20007u);
    EXPECT_EQ(RegistryKey::accessMask(WRITE, 0), 0x20006u);
}

TEST(RegistryKey, OtherFlagsMeanNothing) {
    EXPECT_EQ(RegistryKey::accessMask(8 | READ, 0), 0x20019u);
    EXPECT_EQ(RegistryKey::accessMask(-8, 0), 0u);
    EXPECT_EQ(RegistryKey::accessMask(-1, 0), 0x2001Fu);
}

TEST(RegistryKey, ViewIsAddedToTheRightsAndThe32BitOneWins) {
    EXPECT_EQ(RegistryKey::accessMask(READ, 1), 0x20219u);
    EXPECT_EQ(RegistryKey::accessMask(READ, 2), 0x20119u);
    EXPECT_EQ(RegistryKey::accessMask(READ, 3), 0x20219u);
    EXPECT_EQ(RegistryKey::accessMask(READ, 4), 0x20019u);
    EXPECT_EQ(RegistryKey::accessMask(0, RegistryKey::VIEW_32), 0x200u);
    EXPECT_EQ(RegistryKey::accessMask(0, RegistryKey::VIEW_64), 0x100u);
}

TEST_F(Registry, KeyForReadingIsReadAndNotWritten) {
    store("v", REG_SZ, "x");
    RegistryKey key = open(READ);
    EXPECT_NO_THROW(key.readValue("v"));
    EXPECT_NO_THROW(key.listSubkeys());
    EXPECT_NO_THROW(key.listValues(true));
    expectRegistryError(ERROR_ACCESS_DENIED, "Unable to write value",
                        [&] { key.writeValue("v", textValue("y")); });
    expectRegistryError(ERROR_ACCESS_DENIED, "Unable to delete value 'v'",
                        [&] { key.deleteValue("v"); });
}

TEST_F(Registry, KeyForWritingIsWrittenAndNotRead) {
    store("v", REG_SZ, "x");
    RegistryKey key = open(WRITE);
    EXPECT_NO_THROW(key.writeValue("w", textValue("y")));
    EXPECT_NO_THROW(key.createSubkey("sub"));
    expectRegistryError(ERROR_ACCESS_DENIED, "Unable to read value 'v'",
                        [&] { key.readValue("v"); });
    expectRegistryError(ERROR_ACCESS_DENIED, "Unable to list subkeys", [&] { key.listSubkeys(); });
    expectRegistryError(ERROR_ACCESS_DENIED, "Unable to list values",
                        [&] { key.listValues(false); });
}

TEST_F(Registry, KeyForCreationOnlyReadsAndWritesValues) {
    RegistryKey key(raw, "made", CREATE, 0);
    key.writeValue("v", textValue("x"));
    EXPECT_EQ(key.readString("v"), "x");
    expectRegistryError(ERROR_ACCESS_DENIED, "Unable to list subkeys", [&] { key.listSubkeys(); });
}

TEST_F(Registry, MissingKeyIsAnError) {
    for (const int flags : {0, READ, WRITE, READ | WRITE}) {
        expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to open " + path + "\\none",
                            [&] { RegistryKey(HKEY_CURRENT_USER, path + "\\none", flags, 0); });
    }
    EXPECT_FALSE(hasSubkey("none"));
}

TEST_F(Registry, CreateMakesTheKeyAndAllAboveIt) {
    for (const int flags : {CREATE, CREATE | READ, CREATE | WRITE, CREATE | READ | WRITE}) {
        const std::string name = "a" + std::to_string(flags);
        RegistryKey(raw, name + "\\b\\c", flags, 0);
        EXPECT_TRUE(hasSubkey(name + "\\b\\c"));
        EXPECT_NO_THROW(RegistryKey(raw, name, flags, 0)) << "it exists already";
    }
}

TEST_F(Registry, ViewsAreOpened) {
    store("v", REG_DWORD, "1234");
    for (const int view : {0, 1, 2, 3}) {
        EXPECT_NO_THROW(open(READ, view).readDword("v")) << view;
        EXPECT_NO_THROW(open(READ | CREATE, view).readDword("v")) << view;
    }
}

TEST_F(Registry, ParentIsAPredefinedOrAnOpenKey) {
    makeSubkey("a\\b");
    const RegistryKey parent = open(READ);
    const RegistryKey child(parent.nativeHandle(), "a\\b", READ, 0);
    EXPECT_TRUE(isOpen(child.nativeHandle()));
    store("v", REG_SZ, "x");
    EXPECT_NO_THROW(RegistryKey(raw, "", READ, 0).readValue("v")) << "the parent itself";
}

TEST_F(Registry, ClosedOrImpossibleParentIsAnError) {
    HKEY closed = nullptr;
    {
        const RegistryKey key = open();
        closed = key.nativeHandle();
    }
    expectRegistryError(ERROR_INVALID_HANDLE, "Unable to open x",
                        [&] { RegistryKey(closed, "x", READ, 0); });
    expectRegistryError(ERROR_INVALID_HANDLE, "Unable to open x",
                        [&] { RegistryKey(nullptr, "x", READ | CREATE, 0); });
}

TEST_F(Registry, PathEndsAtItsFirstNul) {
    makeSubkey("a");
    EXPECT_NO_THROW(RegistryKey(raw, std::string("a\0none", 6), READ, 0));
}

TEST_F(Registry, PathThatIsTooLongIsAnError) {
    EXPECT_THROW(RegistryKey(raw, std::string(300, 'k'), READ | CREATE, 0), RegistryOsError);
    EXPECT_THROW(RegistryKey(raw, std::string(100000, 'k'), READ, 0), RegistryOsError);
}

TEST_F(Registry, DestructionCloses) {
    HKEY handle = nullptr;
    {
        const RegistryKey key = open();
        handle = key.nativeHandle();
        EXPECT_TRUE(isOpen(handle));
    }
    EXPECT_FALSE(isOpen(handle));
}

TEST_F(Registry, NoHandleIsLeftBehind) {
    store("odd", REG_DWORD, "12");
    std::size_t before = 0;
    std::size_t after = 0;
    for (std::size_t* const count : {&before, &after}) {
        for (int i = 0; i < 20; ++i) {
            RegistryKey key = open();
            key.createSubkey("a")->openSubkey("", READ);
            EXPECT_THROW(key.createSubkey(std::string(300, 'k')), RegistryOsError);
            EXPECT_THROW(key.openSubkey("none", READ), RegistryOsError);
            EXPECT_THROW(RegistryKey::readValue(raw, "", "odd", 0), std::invalid_argument);
            EXPECT_EQ(RegistryKey::readDword(raw, "", "none", 5, 0), 5u);
            vek::systemInformation();
        }
        *count = support::openHandles().size();
    }
    EXPECT_EQ(before, after);
}

TEST_F(Registry, SubkeyIsOpenedWithItsFlagsInTheParentsView) {
    makeSubkey("a\\b");
    for (const int view : {0, 1, 2, 3}) {
        const std::shared_ptr<RegistryKey> subkey = open(readWrite, view).openSubkey("a\\b", READ);
        EXPECT_EQ(subkey->viewFlags(), view);
        EXPECT_NO_THROW(subkey->listValues(true)) << "its parent is closed";
        expectRegistryError(ERROR_ACCESS_DENIED, "Unable to write value",
                            [&] { subkey->writeValue("v", textValue("y")); });
    }
    EXPECT_NO_THROW(open().openSubkey("a", READ | WRITE)->writeValue("v", textValue("y")));
}

TEST_F(Registry, MissingSubkeyIsAnError) {
    expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to open none",
                        [&] { open().openSubkey("none", READ); });
}

TEST_F(Registry, SubkeyIsNotOpenedForCreationOnly) {
    try {
        open().openSubkey("none", CREATE);
        FAIL() << "nothing was thrown";
    } catch (const vek::UsageError& error) {
        EXPECT_STREQ(error.what(),
                     "Usage error: CREATE cannot be specified in RegistryKey::openSubkey");
    }
    EXPECT_FALSE(hasSubkey("none"));
}

TEST_F(Registry, SubkeyIsMadeIfCreationIsNotTheOnlyFlag) {
    for (const int flags : {CREATE | READ, CREATE | WRITE, CREATE | READ | WRITE, CREATE | 8}) {
        const std::string name = "made" + std::to_string(flags);
        EXPECT_NO_THROW(open().openSubkey(name, flags));
        EXPECT_TRUE(hasSubkey(name));
    }
}

TEST_F(Registry, SubkeyIsCreatedOrOpenedWithAllRights) {
    const RegistryKey reader = open(READ, 2);
    RegistryKey key = open(readWrite, 2);
    for (int i = 0; i < 2; ++i) {
        const std::shared_ptr<RegistryKey> subkey = key.createSubkey("a\\b");
        EXPECT_TRUE(hasSubkey("a\\b"));
        subkey->writeValue("v", textValue("x"));
        EXPECT_EQ(subkey->readString("v"), "x");
        EXPECT_EQ(subkey->viewFlags(), 2);
    }
    EXPECT_EQ(reader.listSubkeys(), Names({"a"}));
}

TEST_F(Registry, SubkeyThatCannotBeCreatedIsAnError) {
    const std::string name(300, 'k');
    try {
        open().createSubkey(name);
        FAIL() << "nothing was thrown";
    } catch (const RegistryOsError& error) {
        EXPECT_NE(error.osError().code(), 0u);
        EXPECT_EQ(error.what(),
                  error.osError().what() + (": Unable to create subkey with name '" + name + "'"));
    }
}

TEST_F(Registry, SubkeyIsDeleted) {
    makeSubkey("a");
    open().deleteSubkey("a");
    EXPECT_FALSE(hasSubkey("a"));
    expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to delete subkey with name 'a'",
                        [&] { open().deleteSubkey("a"); });
}

TEST_F(Registry, SubkeyWithSubkeysIsNotDeleted) {
    makeSubkey("a\\b");
    expectRegistryError(ERROR_ACCESS_DENIED, "Unable to delete subkey with name 'a'",
                        [&] { open().deleteSubkey("a"); });
    EXPECT_TRUE(hasSubkey("a\\b"));
}

TEST_F(Registry, SubkeyIsDeletedWithAllThatIsInIt) {
    makeSubkey("a\\b\\c");
    makeSubkey("a\\d");
    RegistryKey(raw, "a\\b", WRITE, 0).writeValue("v", textValue("x"));
    open().deleteSubkeyRecursive("a");
    EXPECT_FALSE(hasSubkey("a"));
    expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to delete subkey with name 'a' recursively",
                        [&] { open().deleteSubkeyRecursive("a"); });
}

TEST_F(Registry, RecursiveDeletionOfAnEmptyNameEmptiesTheKey) {
    makeSubkey("a\\b");
    store("v", REG_SZ, "x");
    RegistryKey key = open(readWrite | CREATE);
    key.deleteSubkeyRecursive("");
    EXPECT_EQ(key.listSubkeys(), Names());
    EXPECT_TRUE(key.listValues(false).empty());
}

TEST_F(Registry, ValueIsDeleted) {
    store("v", REG_SZ, "x");
    store("", REG_SZ, "x");
    open().deleteValue("v");
    open().deleteValue("");
    EXPECT_TRUE(open().listValues(false).empty());
    expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to delete value 'v'",
                        [&] { open().deleteValue("v"); });
}

TEST_F(Registry, SubkeysAreListedInTheSystemsOrder) {
    EXPECT_EQ(open().listSubkeys(), Names());
    const std::string longest(255, 'z');
    for (const std::string& name : {longest, std::string("beta"), std::string("alpha")}) {
        makeSubkey(name);
    }
    makeSubkey("beta\\below");
    Names raws;
    char name[256];
    for (DWORD i = 0; RegEnumKeyA(raw, i, name, sizeof name) == ERROR_SUCCESS; ++i) {
        raws.emplace_back(name);
    }
    EXPECT_EQ(raws.size(), 3u);
    EXPECT_EQ(open().listSubkeys(), raws);
    EXPECT_NE(std::ranges::find(raws, longest), raws.end());
}

TEST_F(Registry, KeyThatIsDeletedMeanwhileIsToldByEachOperation) {
    makeSubkey("a");
    const std::shared_ptr<RegistryKey> key = open().openSubkey("a", readWrite);
    open().deleteSubkey("a");
    const DWORD deleted = ERROR_KEY_DELETED;
    expectRegistryError(deleted, "Unable to open b", [&] { key->openSubkey("b", READ); });
    expectRegistryError(deleted, "Unable to open b", [&] { key->openSubkey("b", READ | CREATE); });
    expectRegistryError(deleted, "Unable to create subkey with name 'b'",
                        [&] { key->createSubkey("b"); });
    expectRegistryError(deleted, "Unable to delete subkey with name 'b'",
                        [&] { key->deleteSubkey("b"); });
    expectRegistryError(deleted, "Unable to delete subkey with name 'b' recursively",
                        [&] { key->deleteSubkeyRecursive("b"); });
    expectRegistryError(deleted, "Unable to delete value 'v'", [&] { key->deleteValue("v"); });
    expectRegistryError(deleted, "Unable to list subkeys", [&] { key->listSubkeys(); });
    expectRegistryError(deleted, "Unable to list values", [&] { key->listValues(false); });
    expectRegistryError(deleted, "Unable to list values", [&] { key->listValueNames(); });
    expectRegistryError(deleted, "Unable to read value 'v'", [&] { key->readValue("v"); });
    expectRegistryError(deleted, "Unable to read value 'v'", [&] { key->readDword("v"); });
    expectRegistryError(deleted, "Unable to write value",
                        [&] { key->writeValue("v", textValue("x")); });
    EXPECT_THROW(key->openSubkey("b", CREATE), vek::UsageError) << "ahead of any system call";
}

}  // namespace

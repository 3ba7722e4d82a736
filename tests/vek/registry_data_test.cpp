// Values of the registry: listed, read and written.
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/vek/registry_fixture.h"

namespace {

using vek::RegistryKey;
using vek::RegistryTypeError;
using vek::RegistryValue;
using vek::RegistryValueList;
using vek::test::expectRegistryError;
using Strings = std::list<std::string>;
using Bytes = std::vector<unsigned char>;

constexpr int READ = RegistryKey::READ;

class RegistryData : public vek::test::RegistryTest {
  protected:
    void storeEachType() const {
        store("dword", REG_DWORD, "\x01\x02\x03\x04");
        store("qword", REG_QWORD, "\x01\x02\x03\x04\x05\x06\x07\x08");
        store("binary", REG_BINARY, std::string("\0\xFF", 2));
        store("text", REG_SZ, std::string("abc\0", 4));
        store("multi", REG_MULTI_SZ, std::string("a\0\0b\0\0", 6));
        store("expand", REG_EXPAND_SZ, std::string("%TEMP%\0", 7));
        store("none", REG_NONE, "data");
        store("big", REG_DWORD_BIG_ENDIAN, "\x01\x02\x03\x04");
    }

    static void expectEachType(const RegistryValueList& values) {
        ASSERT_EQ(values.size(), 8u);
        for (const auto& [name, value] : values) {
            SCOPED_TRACE(name);
            expectType(name, value);
        }
    }

    static void expectType(const std::string& name, const RegistryValue& value) {
        if (name == "dword") {
            EXPECT_EQ(value.type, RegistryValue::TYPE_DWORD);
            EXPECT_EQ(value.number, 0x04030201u);
        } else if (name == "qword") {
            EXPECT_EQ(value.type, RegistryValue::TYPE_QWORD);
            EXPECT_EQ(value.number, 0x0807060504030201u);
        } else if (name == "binary") {
            EXPECT_EQ(value.type, RegistryValue::TYPE_BINARY);
            EXPECT_EQ(value.bytes, Bytes({0, 255}));
        } else if (name == "text") {
            EXPECT_EQ(value.type, RegistryValue::TYPE_STRING);
            EXPECT_EQ(value.strings, Strings({"abc"}));
        } else if (name == "multi") {
            EXPECT_EQ(value.type, RegistryValue::TYPE_MULTI_STRING);
            EXPECT_EQ(value.strings, Strings({"a", "b"}));
        } else if (name == "expand") {
            EXPECT_EQ(value.type, RegistryValue::TYPE_EXPAND_STRING);
            EXPECT_EQ(value.strings, Strings({"%TEMP%"}));
        } else if (name == "none") {
            EXPECT_EQ(value.type, RegistryValue::TYPE_NONE);
        } else {
            EXPECT_EQ(name, "big");
            EXPECT_EQ(value.type, RegistryValue::TYPE_UNKNOWN);
        }
    }
};

RegistryValue ofText(int type, const Strings& strings) {
    RegistryValue value;
    value.type = type;
    value.strings = strings;
    return value;
}

RegistryValue ofNumber(int type, std::uint64_t number) {
    RegistryValue value;
    value.type = type;
    value.number = number;
    return value;
}

TEST_F(RegistryData, EachTypeIsRead) {
    storeEachType();
    for (const char* name : {"dword", "qword", "binary", "text", "multi", "expand", "none"}) {
        SCOPED_TRACE(name);
        expectType(name, open(READ).readValue(name));
    }
}

TEST_F(RegistryData, TypeThatHasNoNameHereIsUnknownUnlessTheSystemRefusesIt) {
    storeEachType();
    BYTE data[4];
    DWORD size = sizeof data;
    // Wine refuses what Windows gives.
    const LSTATUS result =
        RegGetValueA(raw, nullptr, "big", RRF_RT_ANY | RRF_NOEXPAND, nullptr, data, &size);
    if (result == ERROR_SUCCESS) {
        EXPECT_EQ(open(READ).readValue("big").type, RegistryValue::TYPE_UNKNOWN);
    } else {
        expectRegistryError(static_cast<DWORD>(result), "Unable to read value 'big'",
                            [&] { open(READ).readValue("big"); });
    }
}

TEST_F(RegistryData, EachTypeIsListed) {
    storeEachType();
    expectEachType(open(READ).listValues(true));
}

TEST_F(RegistryData, ListWithoutDataHasNamesOnly) {
    storeEachType();
    store("odd", REG_DWORD, "12");
    const RegistryValueList values = open(READ).listValues(false);
    EXPECT_EQ(values.size(), 9u);
    for (const auto& [name, value] : values) {
        EXPECT_EQ(value.type, RegistryValue::TYPE_NONE) << name;
        EXPECT_TRUE(value.strings.empty());
        EXPECT_TRUE(value.bytes.empty());
        EXPECT_EQ(value.number, 0u);
    }
}

TEST_F(RegistryData, KeyWithoutValuesGivesEmptyLists) {
    makeSubkey("sub");
    EXPECT_TRUE(open(READ).listValues(true).empty());
    EXPECT_TRUE(open(READ).listValues(false).empty());
    EXPECT_TRUE(open(READ).listValueNames().empty());
}

TEST_F(RegistryData, ValuesAreListedInTheSystemsOrderWithNamesOfAnyLength) {
    const std::string longest(16383, 'n');
    for (const std::string& name : {longest, std::string("b"), std::string(""), std::string("a")}) {
        store(name, REG_BINARY, name.substr(0, 1));
    }
    Strings raws;
    std::vector<char> name(16384);
    DWORD length = 16384;
    for (DWORD i = 0; RegEnumValueA(raw, i, name.data(), &length, nullptr, nullptr, nullptr,
                                    nullptr) == ERROR_SUCCESS;
         ++i, length = 16384) {
        raws.emplace_back(name.data(), length);
    }
    EXPECT_EQ(raws.size(), 4u);
    for (const bool withData : {false, true}) {
        Strings names;
        for (const auto& [listed, value] : open(READ).listValues(withData)) {
            names.push_back(listed);
            EXPECT_EQ(value.bytes.size(), withData && !listed.empty() ? 1u : 0u);
        }
        EXPECT_EQ(names, raws);
    }
}

TEST_F(RegistryData, ShortValuesBehindLongOnesAreListedWithTheirOwnLength) {
    store("1", REG_BINARY, std::string(3000, 'x'));
    store("2-with-a-longer-name", REG_BINARY, "ab");
    store("3", REG_BINARY, "");
    store("4", REG_BINARY, std::string(3000, 'y'));
    for (const auto& [name, value] : open(READ).listValues(true)) {
        const std::string content(value.bytes.begin(), value.bytes.end());
        EXPECT_EQ(content, stored(name)) << name;
    }
}

TEST_F(RegistryData, NamesAreListedOfTheDefaultValueOnly) {
    storeEachType();
    EXPECT_EQ(open(READ).listValueNames(), Strings());
    store("", REG_SZ, "default");
    EXPECT_EQ(open(READ).listValueNames(), Strings({""}));
}

// The last byte that the system gives is dropped as the terminator. Windows adds a terminator to a
// text that is read by its name, Wine doesn't.
TEST_F(RegistryData, TextWithoutATerminatorLosesTheLastByteThatTheSystemGives) {
    for (const DWORD type : std::initializer_list<DWORD>{REG_SZ, REG_EXPAND_SZ}) {
        store("text", type, "%abc");
        ASSERT_EQ(stored("text"), "%abc");
        char data[8] = {};
        DWORD size = sizeof data;
        EXPECT_EQ(
            RegGetValueA(raw, nullptr, "text", RRF_RT_ANY | RRF_NOEXPAND, nullptr, data, &size),
            ERROR_SUCCESS);
        EXPECT_EQ(open(READ).readValue("text").strings, Strings({std::string(data, size - 1)}));
        EXPECT_EQ(open(READ).listValues(true).front().second.strings, Strings({"%ab"}));
    }
}

TEST_F(RegistryData, MultiStringWithoutATerminatorIsListedWithoutItsLastElement) {
    store("multi", REG_MULTI_SZ, std::string("one\0two", 7));
    EXPECT_EQ(open(READ).listValues(true).front().second.strings, Strings({"one"}));
}

TEST_F(RegistryData, TextOfNoBytesIsEmpty) {
    store("text", REG_SZ, "");
    EXPECT_EQ(open(READ).readString("text"), "");
    EXPECT_EQ(open(READ).listValues(true).front().second.strings, Strings({""}));
}

TEST_F(RegistryData, ValueOfAnyLengthIsReadWhole) {
    for (const std::size_t size :
         {0u, 1u, 1023u, 1024u, 1025u, 2000u, 2048u, 2049u, 5000u, 1u << 20}) {
        std::string content(size, 'x');
        for (std::size_t i = 0; i < size; ++i) {
            content[i] = static_cast<char>(i * 7);
        }
        store("v", REG_BINARY, content);
        const Bytes read = open(READ).readValue("v").bytes;
        EXPECT_TRUE(std::string(read.begin(), read.end()) == content) << size;
    }
}

TEST_F(RegistryData, TextOfAnyLengthIsReadWhole) {
    for (const std::size_t size : {1022u, 1023u, 1024u, 2000u, 2047u, 2048u, 1u << 20}) {
        const std::string content(size, 't');
        store("v", REG_SZ, content + std::string(1, '\0'));
        EXPECT_TRUE(open(READ).readString("v") == content) << size;
    }
}

TEST_F(RegistryData, MissingValueIsAnError) {
    for (const std::string name : {"none", ""}) {
        expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to read value '" + name + "'",
                            [&] { open(READ).readValue(name); });
    }
}

TEST_F(RegistryData, NumberThatIsTooShortIsAnInvalidArgument) {
    store("odd", REG_DWORD, "12");
    try {
        open(READ).readDword("odd");
        FAIL() << "nothing was thrown";
    } catch (const vek::Exception&) {
        FAIL() << "it is a vek::Exception";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "Buffer too small for a DWORD");
    }
    EXPECT_THROW(open(READ).listValues(true), std::invalid_argument);
    store("odd", REG_QWORD, "1234567");
    try {
        open(READ).readValue("odd");
        FAIL() << "nothing was thrown";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "Buffer too small for a QWORD");
    }
}

TEST_F(RegistryData, NumberThatIsTooLongIsCut) {
    store("long", REG_DWORD, "\x01\x02\x03\x04\x05");
    EXPECT_EQ(open(READ).readDword("long"), 0x04030201u);
}

TEST_F(RegistryData, ReaderOfOneTypeRefusesOthersWithoutAText) {
    storeEachType();
    for (const char* name : {"qword", "binary", "text", "multi", "expand", "none"}) {
        try {
            open(READ).readDword(name);
            ADD_FAILURE() << name;
        } catch (const RegistryTypeError& error) {
            EXPECT_STREQ(error.what(), "");
        }
    }
    for (const char* name : {"dword", "qword", "binary", "multi", "expand", "none"}) {
        try {
            open(READ).readString(name);
            ADD_FAILURE() << name;
        } catch (const RegistryTypeError& error) {
            EXPECT_STREQ(error.what(), "");
        }
    }
    EXPECT_EQ(open(READ).readDword("dword"), 0x04030201u);
    EXPECT_EQ(open(READ).readString("text"), "abc");
}

TEST_F(RegistryData, EachTypeIsWrittenAsTheSystemKeepsIt) {
    RegistryKey key = open();
    const auto expectStored = [&](const RegistryValue& value, DWORD type, const std::string& data) {
        key.writeValue("v", value);
        DWORD storedType = 0;
        EXPECT_EQ(stored("v", &storedType), data);
        EXPECT_EQ(storedType, type);
    };
    const unsigned char bytes[] = {0, 1, 255};
    expectStored(RegistryValue(std::begin(bytes), std::end(bytes)), REG_BINARY,
                 std::string("\0\1\xFF", 3));
    expectStored(RegistryValue(bytes, bytes), REG_BINARY, "");
    expectStored(ofNumber(RegistryValue::TYPE_DWORD, 0x04030201), REG_DWORD, "\x01\x02\x03\x04");
    expectStored(ofNumber(RegistryValue::TYPE_QWORD, 0x0807060504030201), REG_QWORD,
                 "\x01\x02\x03\x04\x05\x06\x07\x08");
    expectStored(ofText(RegistryValue::TYPE_STRING, {"ab"}), REG_SZ, std::string("ab\0", 3));
    expectStored(ofText(RegistryValue::TYPE_STRING, {}), REG_SZ, std::string(1, '\0'));
    expectStored(ofText(RegistryValue::TYPE_EXPAND_STRING, {"%a%"}), REG_EXPAND_SZ,
                 std::string("%a%\0", 4));
    expectStored(ofText(RegistryValue::TYPE_MULTI_STRING, {"ab", "c"}), REG_MULTI_SZ,
                 std::string("ab\0c\0\0", 6));
    expectStored(RegistryValue(), REG_NONE, "");
    expectStored(ofNumber(RegistryValue::TYPE_UNKNOWN, 1), 0xFFFFFFFF, "");
    expectStored(ofNumber(42, 1), 0xFFFFFFFF, "");
}

TEST_F(RegistryData, TextWithNulsInsideSurvives) {
    const std::string hostile("a\0b\0\0", 5);
    open().writeValue("v", ofText(RegistryValue::TYPE_STRING, {hostile}));
    EXPECT_EQ(open(READ).readString("v"), hostile);
}

TEST_F(RegistryData, LongAndStrangeValuesSurvive) {
    std::string strange;
    for (int i = 1; i < 128; ++i) {
        strange += static_cast<char>(i);
    }
    const Strings strings = {std::string(1u << 20, 'm'), strange, "%PATH%"};
    open().writeValue("v", ofText(RegistryValue::TYPE_MULTI_STRING, strings));
    EXPECT_EQ(open(READ).readValue("v").strings, strings);
    EXPECT_EQ(open(READ).listValues(true).front().second.strings, strings);
}

TEST_F(RegistryData, ValueNamesEndAtTheirFirstNulAndTakeEverythingElse) {
    open().writeValue(std::string("a\0b", 3), ofNumber(RegistryValue::TYPE_DWORD, 1));
    EXPECT_EQ(open(READ).readDword("a"), 1u);
    EXPECT_EQ(open(READ).readDword(std::string("a\0c", 3)), 1u);
    for (const std::string name : {"", "a\\b", "a/b'\"", "%PATH%", " ", "*"}) {
        open().writeValue(name, ofNumber(RegistryValue::TYPE_DWORD, 7));
        EXPECT_EQ(open(READ).readDword(name), 7u) << name;
    }
}

TEST_F(RegistryData, StaticReadersOpenReadAndClose) {
    storeEachType();
    for (const int view : {0, 1, 2, 3}) {
        EXPECT_EQ(RegistryKey::readDword(HKEY_CURRENT_USER, path, "dword", view), 0x04030201u);
        EXPECT_EQ(RegistryKey::readString(HKEY_CURRENT_USER, path, "text", view), "abc");
        EXPECT_EQ(RegistryKey::readValue(HKEY_CURRENT_USER, path, "qword", view).number,
                  0x0807060504030201u);
    }
}

TEST_F(RegistryData, StaticReadersThrowWhatOpeningAndReadingThrow) {
    storeEachType();
    store("odd", REG_DWORD, "12");
    expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to open none",
                        [&] { RegistryKey::readValue(raw, "none", "dword", 0); });
    expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to open none",
                        [&] { RegistryKey::readDword(raw, "none", "dword", 0); });
    expectRegistryError(ERROR_FILE_NOT_FOUND, "Unable to read value 'missing'",
                        [&] { RegistryKey::readString(raw, "", "missing", 0); });
    EXPECT_THROW(RegistryKey::readDword(raw, "", "text", 0), RegistryTypeError);
    EXPECT_THROW(RegistryKey::readString(raw, "", "expand", 0), RegistryTypeError);
    EXPECT_THROW(RegistryKey::readValue(raw, "", "odd", 0), std::invalid_argument);
}

TEST_F(RegistryData, DefaultStandsInForARegistryError) {
    storeEachType();
    const RegistryValue fallback = ofText(RegistryValue::TYPE_STRING, {"fallback"});
    for (const std::string key : {"none", ""}) {
        EXPECT_EQ(RegistryKey::readDword(raw, key, "missing", 5, 0), 5u);
        EXPECT_EQ(RegistryKey::readString(raw, key, "missing", "fallback", 0), "fallback");
        EXPECT_EQ(RegistryKey::readValue(raw, key, "missing", fallback, 0).asString(), "fallback");
    }
    EXPECT_EQ(RegistryKey::readDword(raw, "", "text", 5, 0), 5u);
    EXPECT_EQ(RegistryKey::readString(raw, "", "dword", "fallback", 0), "fallback");
}

TEST_F(RegistryData, DefaultIsNotUsedWhereTheValueCanBeRead) {
    storeEachType();
    EXPECT_EQ(RegistryKey::readDword(raw, "", "dword", 5, 0), 0x04030201u);
    EXPECT_EQ(RegistryKey::readString(raw, "", "text", "fallback", 0), "abc");
    EXPECT_EQ(RegistryKey::readValue(raw, "", "qword", RegistryValue(), 0).number,
              0x0807060504030201u);
}

TEST_F(RegistryData, DefaultDoesNotStandInForOtherErrors) {
    store("odd", REG_DWORD, "12");
    EXPECT_THROW(RegistryKey::readDword(raw, "", "odd", 5, 0), std::invalid_argument);
    EXPECT_THROW(RegistryKey::readString(raw, "", "odd", "fallback", 0), std::invalid_argument);
    EXPECT_THROW(RegistryKey::readValue(raw, "", "odd", RegistryValue(), 0), std::invalid_argument);
}

}  // namespace

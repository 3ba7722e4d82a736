#include "vek/registry_value.h"

#include <initializer_list>
#include <iomanip>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "vek/base/windows.h"
#include "vek/exception.h"

namespace {

using vek::RegistryValue;
using vek::RegistryValueList;
using Strings = std::list<std::string>;
using Bytes = std::vector<unsigned char>;

RegistryValue fromSystem(std::uint32_t type, const std::string& data) {
    return RegistryValue::fromSystem(type, reinterpret_cast<const unsigned char*>(data.data()),
                                     data.size());
}

RegistryValue ofNumber(int type, std::uint64_t number) {
    RegistryValue value;
    value.type = type;
    value.number = number;
    return value;
}

RegistryValue ofStrings(int type, const Strings& strings) {
    RegistryValue value;
    value.type = type;
    value.strings = strings;
    return value;
}

RegistryValue ofBytes(const Bytes& bytes) {
    return RegistryValue(bytes.begin(), bytes.end());
}

std::string printed(const RegistryValue& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

std::string data(const RegistryValue& value) {
    const Bytes bytes = value.systemData();
    return std::string(bytes.begin(), bytes.end());
}

// With NULs inside.
template <std::size_t Size>
std::string text(const char (&literal)[Size]) {
    return std::string(literal, Size - 1);
}

TEST(RegistryValue, StartsWithoutATypeAndEmpty) {
    const RegistryValue value;
    EXPECT_EQ(value.type, RegistryValue::TYPE_NONE);
    EXPECT_EQ(value.number, 0u);
    EXPECT_TRUE(value.bytes.empty());
    EXPECT_TRUE(value.strings.empty());
}

TEST(RegistryValue, IsBinaryWhenMadeOfBytes) {
    const unsigned char bytes[] = {1, 0, 255};
    const RegistryValue value(std::begin(bytes), std::end(bytes));
    EXPECT_EQ(value.type, RegistryValue::TYPE_BINARY);
    EXPECT_EQ(value.bytes, Bytes({1, 0, 255}));
    EXPECT_EQ(RegistryValue(bytes, bytes).type, RegistryValue::TYPE_BINARY);
}

TEST(RegistryValue, IsCopiedAndMovedWhole) {
    RegistryValue original = ofStrings(RegistryValue::TYPE_MULTI_STRING, {"a", "b"});
    original.number = 7;
    original.bytes = {1, 2};
    const auto expectSame = [](const RegistryValue& value) {
        EXPECT_EQ(value.type, RegistryValue::TYPE_MULTI_STRING);
        EXPECT_EQ(value.number, 7u);
        EXPECT_EQ(value.bytes, Bytes({1, 2}));
        EXPECT_EQ(value.strings, Strings({"a", "b"}));
    };
    RegistryValue copy(original);
    expectSame(copy);
    RegistryValue assigned;
    assigned = copy;
    expectSame(assigned);
    RegistryValue moved(std::move(copy));
    expectSame(moved);
    RegistryValue moveAssigned = ofBytes({9});
    moveAssigned = std::move(moved);
    expectSame(moveAssigned);
    expectSame(original);
}

TEST(RegistryValue, TypesHaveTheirNumbersAndTheSystemsInBothDirections) {
    const struct {
        int type;
        int number;
        DWORD systemType;
    } rows[] = {
        {RegistryValue::TYPE_UNKNOWN, -1, static_cast<DWORD>(-1)},
        {RegistryValue::TYPE_NONE, 0, REG_NONE},
        {RegistryValue::TYPE_DWORD, 1, REG_DWORD},
        {RegistryValue::TYPE_QWORD, 2, REG_QWORD},
        {RegistryValue::TYPE_BINARY, 3, REG_BINARY},
        {RegistryValue::TYPE_STRING, 4, REG_SZ},
        {RegistryValue::TYPE_MULTI_STRING, 5, REG_MULTI_SZ},
        {RegistryValue::TYPE_EXPAND_STRING, 6, REG_EXPAND_SZ},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.type, row.number);
        EXPECT_EQ(ofNumber(row.type, 0).systemType(), row.systemType) << row.type;
        EXPECT_EQ(fromSystem(row.systemType, "12345678").type, row.type) << row.systemType;
    }
}

TEST(RegistryValue, OtherTypesAreUnknownInBothDirections) {
    for (const DWORD type : {5u, 6u, 8u, 9u, 10u, 12u, 0x80000000u, 0xFFFFFFFEu}) {
        const RegistryValue value = fromSystem(type, "data");
        EXPECT_EQ(value.type, RegistryValue::TYPE_UNKNOWN) << type;
        EXPECT_TRUE(value.bytes.empty());
        EXPECT_TRUE(value.strings.empty());
        EXPECT_EQ(value.number, 0u);
    }
    for (const int type : {-2, 7, 42, 0x7FFFFFFF}) {
        EXPECT_EQ(ofNumber(type, 0).systemType(), 0xFFFFFFFFu) << type;
    }
}

TEST(RegistryValue, TypeWithoutContentsTakesAndGivesNone) {
    const RegistryValue value = fromSystem(REG_NONE, "data");
    EXPECT_TRUE(value.bytes.empty());
    for (const int type : {-1, 0, 42}) {
        RegistryValue full = ofStrings(type, {"text"});
        full.bytes = {1};
        full.number = 1;
        EXPECT_EQ(data(full), "");
    }
}

TEST(RegistryValue, DwordIsTheFirstFourBytesExtendedByZeros) {
    EXPECT_EQ(fromSystem(REG_DWORD, "\x01\x02\x03\xFF").number, 0xFF030201u);
    EXPECT_EQ(fromSystem(REG_DWORD, "\x01\x02\x03\x04\x05\x06").number, 0x04030201u);
    EXPECT_EQ(data(ofNumber(RegistryValue::TYPE_DWORD, 0x1FF030201)), "\x01\x02\x03\xFF");
}

TEST(RegistryValue, QwordIsTheFirstEightBytes) {
    EXPECT_EQ(fromSystem(REG_QWORD, "\x01\x02\x03\x04\x05\x06\x07\xFF").number,
              0xFF07060504030201u);
    EXPECT_EQ(fromSystem(REG_QWORD, "\x01\x02\x03\x04\x05\x06\x07\x08\x09").number,
              0x0807060504030201u);
    EXPECT_EQ(data(ofNumber(RegistryValue::TYPE_QWORD, 0xFF07060504030201)),
              "\x01\x02\x03\x04\x05\x06\x07\xFF");
}

TEST(RegistryValue, TooShortNumbersAreInvalidArguments) {
    for (const std::size_t size : {0u, 1u, 2u, 3u}) {
        try {
            fromSystem(REG_DWORD, std::string(size, '\1'));
            ADD_FAILURE() << "nothing was thrown for " << size;
        } catch (const vek::Exception&) {
            ADD_FAILURE() << "it is a vek::Exception";
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "Buffer too small for a DWORD");
        }
    }
    for (const std::size_t size : {0u, 4u, 7u}) {
        try {
            fromSystem(REG_QWORD, std::string(size, '\1'));
            ADD_FAILURE() << "nothing was thrown for " << size;
        } catch (const vek::Exception&) {
            ADD_FAILURE() << "it is a vek::Exception";
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "Buffer too small for a QWORD");
        }
    }
}

TEST(RegistryValue, BinaryIsTheBytes) {
    EXPECT_EQ(fromSystem(REG_BINARY, text("a\0\xFF")).bytes, Bytes({'a', 0, 255}));
    EXPECT_TRUE(fromSystem(REG_BINARY, "").bytes.empty());
    EXPECT_EQ(data(ofBytes({'a', 0, 255})), text("a\0\xFF"));
    EXPECT_EQ(data(ofBytes({})), "");
}

TEST(RegistryValue, TextLosesItsLastByteWhateverItIs) {
    for (const DWORD type : std::initializer_list<DWORD>{REG_SZ, REG_EXPAND_SZ}) {
        EXPECT_EQ(fromSystem(type, text("abc\0")).strings, Strings({"abc"}));
        EXPECT_EQ(fromSystem(type, "abc").strings, Strings({"ab"}));
        EXPECT_EQ(fromSystem(type, text("a\0b\0\0")).strings, Strings({text("a\0b\0")}));
        EXPECT_EQ(fromSystem(type, text("\0")).strings, Strings({""}));
    }
}

TEST(RegistryValue, TextOfNoBytesIsEmpty) {
    EXPECT_EQ(fromSystem(REG_SZ, "").strings, Strings({""}));
    EXPECT_EQ(RegistryValue::fromSystem(REG_EXPAND_SZ, nullptr, 0).strings, Strings({""}));
}

TEST(RegistryValue, MultiStringLosesEmptyElementsAndAnUnterminatedEnd) {
    const auto strings = [](const std::string& from) {
        return fromSystem(REG_MULTI_SZ, from).strings;
    };
    EXPECT_EQ(strings(text("a\0\0b\0\0")), Strings({"a", "b"}));
    EXPECT_EQ(strings(text("one\0two\0\0")), Strings({"one", "two"}));
    EXPECT_EQ(strings(text("one\0two\0")), Strings({"one", "two"}));
    EXPECT_EQ(strings(text("one\0two")), Strings({"one"}));
    EXPECT_EQ(strings(text("\0\0\0")), Strings());
    EXPECT_EQ(strings("one"), Strings());
    EXPECT_EQ(strings(""), Strings());
    EXPECT_EQ(RegistryValue::fromSystem(REG_MULTI_SZ, nullptr, 0).strings, Strings());
}

TEST(RegistryValue, TextsAreGivenToTheSystemWithTheirTerminators) {
    EXPECT_EQ(data(ofStrings(RegistryValue::TYPE_STRING, {"ab", "c"})), text("ab\0"));
    EXPECT_EQ(data(ofStrings(RegistryValue::TYPE_EXPAND_STRING, {"%a%"})), text("%a%\0"));
    EXPECT_EQ(data(ofStrings(RegistryValue::TYPE_STRING, {text("a\0b")})), text("a\0b\0"));
    EXPECT_EQ(data(ofStrings(RegistryValue::TYPE_MULTI_STRING, {"ab", "c"})), text("ab\0c\0\0"));
    EXPECT_EQ(data(ofStrings(RegistryValue::TYPE_MULTI_STRING, {})), text("\0"));
}

TEST(RegistryValue, StringTypeWithoutAStringIsAnEmptyText) {
    const RegistryValue value = ofStrings(RegistryValue::TYPE_STRING, {});
    EXPECT_EQ(data(value), text("\0"));
    EXPECT_EQ(value.asString(), "");
    EXPECT_EQ(printed(value), " [TYPE_STRING]");
}

TEST(RegistryValue, GivesItsContentsToWhoKnowsTheType) {
    EXPECT_EQ(ofNumber(RegistryValue::TYPE_DWORD, 0xFFFFFFFF).asDword(), 0xFFFFFFFFul);
    EXPECT_EQ(ofStrings(RegistryValue::TYPE_STRING, {"first", "second"}).asString(), "first");
}

TEST(RegistryValue, WrongTypeIsATypeErrorWithoutAText) {
    for (const int type : {-1, 0, 2, 3, 4, 5, 6, 42}) {
        try {
            ofNumber(type, 1).asDword();
            ADD_FAILURE() << "nothing was thrown for " << type;
        } catch (const vek::RegistryTypeError& error) {
            EXPECT_STREQ(error.what(), "");
        }
    }
    for (const int type : {-1, 0, 1, 2, 3, 5, 6, 42}) {
        try {
            ofStrings(type, {"text"}).asString();
            ADD_FAILURE() << "nothing was thrown for " << type;
        } catch (const vek::RegistryTypeError& error) {
            EXPECT_STREQ(error.what(), "");
        }
    }
}

TEST(RegistryValue, IsPrintedWithItsTypesName) {
    EXPECT_EQ(printed(ofNumber(RegistryValue::TYPE_UNKNOWN, 1)), "? [TYPE_UNKNOWN]");
    EXPECT_EQ(printed(ofNumber(RegistryValue::TYPE_NONE, 1)), "? [TYPE_NONE]");
    EXPECT_EQ(printed(ofNumber(RegistryValue::TYPE_DWORD, 4294967295)), "4294967295 [TYPE_DWORD]");
    EXPECT_EQ(printed(ofNumber(RegistryValue::TYPE_QWORD, 0xFFFFFFFFFFFFFFFF)),
              "18446744073709551615 [TYPE_QWORD]");
    EXPECT_EQ(printed(ofBytes({0, 0x0A, 0xFF})), "00 0A FF [TYPE_BINARY]");
    EXPECT_EQ(printed(ofBytes({})), " [TYPE_BINARY]");
    EXPECT_EQ(printed(ofStrings(RegistryValue::TYPE_STRING, {"a", "b"})), "a [TYPE_STRING]");
    EXPECT_EQ(printed(ofStrings(RegistryValue::TYPE_EXPAND_STRING, {"%a%"})),
              "%a% [TYPE_EXPAND_STRING]");
    EXPECT_EQ(printed(ofStrings(RegistryValue::TYPE_MULTI_STRING, {"a", "b", "c"})),
              "a, b, c [TYPE_MULTI_STRING]");
    EXPECT_EQ(printed(ofStrings(RegistryValue::TYPE_MULTI_STRING, {})), " [TYPE_MULTI_STRING]");
}

TEST(RegistryValue, NumberThatIsNoTypePrintsNothingBetweenTheBrackets) {
    EXPECT_EQ(printed(ofNumber(42, 1)), " []");
    EXPECT_EQ(printed(ofNumber(-2, 1)), " []");
}

TEST(RegistryValue, PrintingNeitherFollowsNorChangesTheStreamsFormat) {
    std::ostringstream stream;
    stream << std::hex << std::showbase << std::left << std::setfill('*');
    const std::ios::fmtflags flags = stream.flags();
    stream << ofNumber(RegistryValue::TYPE_DWORD, 255) << ofBytes({0xAB, 1});
    EXPECT_EQ(stream.str(), "255 [TYPE_DWORD]AB 01 [TYPE_BINARY]");
    EXPECT_EQ(stream.flags(), flags);
    EXPECT_EQ(stream.fill(), '*');
}

// Takes some characters and fails from then on.
class FullBuffer : public std::streambuf {
  public:
    explicit FullBuffer(int capacity) : room(capacity) {}

  protected:
    int_type overflow(int_type character) override {
        return room-- > 0 ? character : traits_type::eof();
    }

  private:
    int room;
};

TEST(RegistryValue, PrintingThatThrowsLeavesTheStreamsFormatAlone) {
    for (int room = 0; room < 12; ++room) {
        FullBuffer buffer(room);
        std::ostream stream(&buffer);
        stream.exceptions(std::ios::badbit);
        stream << std::setfill('*') << std::oct;
        const std::ios::fmtflags flags = stream.flags();
        EXPECT_THROW(stream << ofBytes({0xAB, 1, 2, 3}), std::ios::failure);
        EXPECT_EQ(stream.flags(), flags);
        EXPECT_EQ(stream.fill(), '*');
    }
}

TEST(RegistryValueList, IsPrintedLineByLine) {
    RegistryValueList values;
    std::ostringstream empty;
    empty << values;
    EXPECT_EQ(empty.str(), "");
    values.emplace_back("", ofStrings(RegistryValue::TYPE_STRING, {"default"}));
    values.emplace_back("count", ofNumber(RegistryValue::TYPE_DWORD, 3));
    std::ostringstream stream;
    stream << values;
    EXPECT_EQ(stream.str(), ": default [TYPE_STRING]\ncount: 3 [TYPE_DWORD]\n");
}

}  // namespace

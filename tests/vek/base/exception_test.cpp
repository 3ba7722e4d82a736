#include "vek/exception.h"

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>

#include <gtest/gtest.h>

#include "vek/base/os_error_text.h"

namespace {

using vek::osErrorText;

// Runs `f` and returns what it wrote to std::cerr.
template <class F>
std::string errorOutputOf(F f) {
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

TEST(OsError, TextIsTheSystemsTextAndTheNumber) {
    EXPECT_EQ(vek::OsError(2).what(), osErrorText(2) + " (2)");
    EXPECT_EQ(vek::OsError(2).code(), 2u);
}

TEST(OsError, NumberIsPrintedUnsigned) {
    std::string what;
    errorOutputOf([&] { what = vek::OsError(0xFFFFFFFFu).what(); });
    EXPECT_EQ(what, "<unknown-error> (4294967295)");
}

TEST(OsError, TextIsLookedUpWhenItIsAskedFor) {
    EXPECT_EQ(errorOutputOf([] { vek::OsError error(99999); }), "");
    EXPECT_NE(errorOutputOf([] { vek::OsError(99999).what(); }), "");
}

TEST(OsError, UnknownNumberStandsBehindThePlaceholder) {
    std::string what;
    errorOutputOf([&] { what = vek::OsError(99999).what(); });
    EXPECT_EQ(what, "<unknown-error> (99999)");
}

TEST(OsError, TextIsLookedUpOnlyOnceForEachOfTheTwoForms) {
    const vek::OsError error(99999);
    errorOutputOf([&] { error.what(); });
    EXPECT_EQ(errorOutputOf([&] { error.what(); }), "");
    EXPECT_NE(errorOutputOf([&] { error.printableText(); }), "");
    EXPECT_EQ(errorOutputOf([&] { error.printableText(); }), "");
}

TEST(OsError, WhatPointsIntoTheObject) {
    const vek::OsError error(2);
    EXPECT_EQ(error.what(), error.what());
}

TEST(OsError, SubclassesHaveTheSameText) {
    const std::string expected = vek::OsError(5).what();
    EXPECT_EQ(vek::NetError(5).what(), expected);
    EXPECT_EQ(vek::PermissionError(5).what(), expected);
    EXPECT_EQ(vek::NetError(10049).code(), 10049u);
    EXPECT_EQ(vek::PermissionError(1314).code(), 1314u);
}

TEST(UsageError, HasItsPrefix) {
    EXPECT_STREQ(vek::UsageError("why").what(), "Usage error: why");
}

TEST(ParseError, TellsInputAndReason) {
    const vek::ParseError error("12x", "no number");
    EXPECT_STREQ(error.what(), "Parse error: Couldn't parse '12x': no number");
    EXPECT_EQ(error.input(), "12x");
}

TEST(RuntimeError, IsItsMessageAlone) {
    EXPECT_STREQ(vek::RuntimeError("plain").what(), "plain");
}

TEST(FsError, TellsThePathInQuotesAndTheSystemsText) {
    const vek::FsError error("C:\\a b", 5);
    EXPECT_EQ(error.what(),
              "File system error at location: \"C:\\a b\": " + osErrorText(5) + " (5)");
    EXPECT_EQ(error.path(), "C:\\a b");
    EXPECT_EQ(error.osError().code(), 5u);
}

TEST(FsError, SubclassesHaveTheSameText) {
    const std::string expected = vek::FsError("p", 2).what();
    EXPECT_EQ(vek::NoSuchFileError("p", 2).what(), expected);
    EXPECT_EQ(vek::FileAccessError("p", 2).what(), expected);
    EXPECT_EQ(vek::FileExistsError("p", 2).what(), expected);
    EXPECT_EQ(vek::NotSameDeviceError("p", 2).what(), expected);
    EXPECT_EQ(vek::IsASymlinkError("p", 2).what(), expected);
}

TEST(FsError, EmptyPathKeepsItsQuotes) {
    EXPECT_EQ(vek::FsError("", 5).what(),
              "File system error at location: \"\": " + osErrorText(5) + " (5)");
}

// Clears the text, as a class of an owner may.
class FsErrorWithoutText : public vek::ExceptionOf<FsErrorWithoutText, vek::FsError> {
  public:
    FsErrorWithoutText() : ExceptionOf("p", 5) { text.clear(); }
};

TEST(FsError, WithoutTextIsTheSystemsTextAlone) {
    EXPECT_EQ(FsErrorWithoutText().what(), osErrorText(5) + " (5)");
}

TEST(RegistryError, WithoutArgumentsIsEmpty) {
    EXPECT_STREQ(vek::RegistryError().what(), "");
    EXPECT_STREQ(vek::RegistryTypeError().what(), "");
    EXPECT_EQ(vek::RegistryError().printableText(), "\n");
}

TEST(RegistryError, IsItsMessageAlone) {
    EXPECT_STREQ(vek::RegistryError("m").what(), "m");
    EXPECT_STREQ(vek::RegistryTypeError("t").what(), "t");
}

TEST(RegistryOsError, HasTheSystemsTextFirst) {
    const vek::RegistryOsError error("k", 2);
    EXPECT_EQ(error.what(), osErrorText(2) + " (2): k");
    EXPECT_EQ(error.osError().code(), 2u);
}

TEST(RegistryOsError, WithoutAMessageIsTheSystemsTextAlone) {
    EXPECT_EQ(vek::RegistryOsError("", 2).what(), osErrorText(2) + " (2)");
}

TEST(Exception, ChainIsJoinedByColonsOrByLines) {
    const vek::RuntimeError error("top", vek::OsError(2));
    const std::string osText = osErrorText(2) + " (2)";
    EXPECT_EQ(error.what(), "top: " + osText);
    EXPECT_EQ(error.printableText(), "top\n" + osText + "\n");
    EXPECT_EQ(error.description(), "top");
}

TEST(Exception, ChainOfThreeKeepsItsOrder) {
    const vek::RuntimeError error("a", vek::RuntimeError("b", vek::RuntimeError("c")));
    EXPECT_STREQ(error.what(), "a: b: c");
    EXPECT_EQ(error.printableText(), "a\nb\nc\n");
}

TEST(Exception, RaiseThrowsTheMostDerivedClassWithItsCauses) {
    std::unique_ptr<vek::Exception> kept;
    try {
        throw vek::NoSuchFileError("p", 3);
    } catch (const vek::Exception& error) {
        kept.reset(error.clone());
    }
    ASSERT_NE(kept, nullptr);
    EXPECT_THROW(kept->raise(), vek::NoSuchFileError);
    try {
        vek::RuntimeError("outer", *kept).raise();
    } catch (const vek::RuntimeError& error) {
        ASSERT_NE(error.getCause(), nullptr);
        EXPECT_NE(dynamic_cast<const vek::NoSuchFileError*>(error.getCause()), nullptr);
        EXPECT_NE(error.getCause(), kept.get());
    }
}

template <class E>
void expectCopiesKeepTheClassAndTheText(const E& error) {
    static_assert(std::is_copy_constructible_v<E>);
    const std::unique_ptr<vek::Exception> copy(error.clone());
    ASSERT_NE(copy, nullptr);
    const vek::Exception& copied = *copy;
    EXPECT_EQ(typeid(copied), typeid(E));
    EXPECT_STREQ(copy->what(), error.what());
    try {
        copy->raise();
    } catch (const vek::Exception& raised) {
        EXPECT_EQ(typeid(raised), typeid(E));
        EXPECT_EQ(raised.printableText(), error.printableText());
    }
}

TEST(Exception, EveryClassIsClonedAndRaisedWhole) {
    expectCopiesKeepTheClassAndTheText(vek::OsError(2));
    expectCopiesKeepTheClassAndTheText(vek::NetError(2));
    expectCopiesKeepTheClassAndTheText(vek::PermissionError(2));
    expectCopiesKeepTheClassAndTheText(vek::UsageError("m"));
    expectCopiesKeepTheClassAndTheText(vek::ParseError("i", "r"));
    expectCopiesKeepTheClassAndTheText(vek::RuntimeError("m", vek::OsError(2)));
    expectCopiesKeepTheClassAndTheText(vek::FsError("p", 2));
    expectCopiesKeepTheClassAndTheText(vek::NoSuchFileError("p", 2));
    expectCopiesKeepTheClassAndTheText(vek::FileAccessError("p", 5));
    expectCopiesKeepTheClassAndTheText(vek::FileExistsError("p", 80));
    expectCopiesKeepTheClassAndTheText(vek::NotSameDeviceError("p", 17));
    expectCopiesKeepTheClassAndTheText(vek::IsASymlinkError("p", 2));
    expectCopiesKeepTheClassAndTheText(vek::RegistryError("m"));
    expectCopiesKeepTheClassAndTheText(vek::RegistryTypeError("m"));
    expectCopiesKeepTheClassAndTheText(vek::RegistryOsError("m", 2));
}

TEST(Exception, TreeHasItsShape) {
    using std::is_base_of_v;
    static_assert(is_base_of_v<std::exception, vek::Exception>);
    static_assert(is_base_of_v<vek::Exception, vek::OsError>);
    static_assert(is_base_of_v<vek::OsError, vek::NetError>);
    static_assert(is_base_of_v<vek::NetError, vek::NoSuchAddress>);
    static_assert(is_base_of_v<vek::NetError, vek::NoPeer>);
    static_assert(is_base_of_v<vek::NetError, vek::NoNetwork>);
    static_assert(is_base_of_v<vek::OsError, vek::PermissionError>);
    static_assert(!is_base_of_v<vek::OsError, vek::FsError>);
    static_assert(is_base_of_v<vek::FsError, vek::NoSuchFileError>);
    static_assert(is_base_of_v<vek::FsError, vek::FileAccessError>);
    static_assert(is_base_of_v<vek::FsError, vek::FileExistsError>);
    static_assert(is_base_of_v<vek::FsError, vek::NotSameDeviceError>);
    static_assert(is_base_of_v<vek::FsError, vek::IsASymlinkError>);
    static_assert(is_base_of_v<vek::RegistryError, vek::RegistryTypeError>);
    static_assert(is_base_of_v<vek::RegistryError, vek::RegistryOsError>);
    static_assert(!is_base_of_v<vek::OsError, vek::RegistryOsError>);
    static_assert(std::is_abstract_v<vek::Exception>);
}

class WithoutText : public vek::ExceptionOf<WithoutText> {};

TEST(Exception, IsEmptyByDefault) {
    EXPECT_STREQ(WithoutText().what(), "");
    EXPECT_EQ(WithoutText().printableText(), "\n");
    EXPECT_EQ(WithoutText().getCause(), nullptr);
}

// As when there is no memory for the copy.
class Unclonable : public vek::ExceptionOf<Unclonable> {
  public:
    vek::Exception* clone() const override { return nullptr; }
};

TEST(Exception, CauseThatCantBeClonedIsLeftOut) {
    const vek::RuntimeError error("top", Unclonable());
    EXPECT_EQ(error.getCause(), nullptr);
    EXPECT_STREQ(error.what(), "top");
}

// Can be cloned once only, so that its holder can be built and then loses it when copied.
class ClonableOnce : public vek::ExceptionOf<ClonableOnce> {
  public:
    explicit ClonableOnce(bool isClonable) : clonable(isClonable) {}
    vek::Exception* clone() const override { return clonable ? new ClonableOnce(false) : nullptr; }

  private:
    bool clonable;
};

TEST(Exception, CopyIsWithoutACauseThatCantBeCloned) {
    const vek::RuntimeError error("top", ClonableOnce(true));
    ASSERT_NE(error.getCause(), nullptr);
    const vek::RuntimeError copy(error);
    EXPECT_EQ(copy.getCause(), nullptr);
    EXPECT_STREQ(copy.what(), "top");
}

TEST(Exception, CopyKeepsTheTextsThatHaveBeenAskedFor) {
    const vek::OsError error(99999);
    errorOutputOf([&] {
        error.what();
        error.printableText();
    });
    EXPECT_EQ(errorOutputOf([&] {
                  const vek::OsError copy(error);
                  EXPECT_STREQ(copy.what(), "<unknown-error> (99999)");
                  EXPECT_EQ(copy.printableText(), "<unknown-error> (99999)\n");
              }),
              "");
}

TEST(Exception, DescriptionsInTheChainAreThoseOfTheClasses) {
    const vek::RuntimeError error("top", vek::RegistryOsError("key", 5));
    EXPECT_EQ(error.what(), "top: " + osErrorText(5) + " (5): key");
}

TEST(Exception, HugeTextsStayWhole) {
    const std::string text(1 << 20, '\xE4');
    EXPECT_EQ(vek::RuntimeError(text, vek::RuntimeError(text)).what(), text + ": " + text);
}

TEST(Exception, PrintableTextKeepsZeroBytes) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(vek::RuntimeError(text).printableText(), text + "\n");
}

TEST(Exception, IsCaughtAsStdException) {
    try {
        throw vek::UsageError("x");
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "Usage error: x");
    }
}

TEST(Exception, CopyOutlivesTheOriginal) {
    auto original = std::make_unique<vek::RuntimeError>("top", vek::RuntimeError("cause"));
    const vek::RuntimeError copy(*original);
    original.reset();
    EXPECT_STREQ(copy.what(), "top: cause");
}

}  // namespace

#include "vek/exception.h"

#include <memory>

#include <gtest/gtest.h>

#include "vek/base/os_error_text.h"

namespace {

using vek::osErrorText;

// Runs `f` and gives back what it wrote to std::cerr.
template <class F>
std::string errorOutputOf(F f) {
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

TEST(OsErrorText, DropsTheLineEndOfTheSystemsText) {
    const std::string text = osErrorText(2);
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);
}

TEST(OsErrorText, UnknownNumberIsReportedAndGivesAPlaceholder) {
    std::string text;
    const std::string output = errorOutputOf([&] { text = osErrorText(99999); });
    EXPECT_EQ(text, "<unknown-error>");
    EXPECT_EQ(output, "vek::osErrorText: error getting error text from FormatMessage!\n");
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

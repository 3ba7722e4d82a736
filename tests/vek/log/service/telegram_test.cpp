#include "vek/log/telegram.h"

#include <memory>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using vek::log::Telegram;
using vek::log::TelegramParams;
using Entries = std::vector<TelegramParams::Entry>;

Entries entriesOf(const Telegram& telegram) {
    return Entries(telegram.params.begin(), telegram.params.end());
}

std::string textOf(const Telegram& telegram) {
    std::string text = "left from before";
    telegram.serialize(text);
    return text;
}

// Texts of the tests have a bar instead of the separator of parameters.
std::string wire(std::string text) {
    for (char& c : text) {
        c = c == '|' ? '\x1F' : c;
    }
    return text;
}

Telegram parsed(const std::string& text) {
    Telegram telegram;
    telegram.parse(wire(text));
    return telegram;
}

template <class Error>
std::string thrownBy(const auto& work) {
    try {
        work();
    } catch (const Error& error) {
        return error.description();
    }
    return "nothing thrown";
}

TEST(Telegram, IsEmptyAtFirst) {
    const Telegram telegram;
    EXPECT_EQ(telegram.type, "");
    EXPECT_TRUE(telegram.params.empty());
    EXPECT_FALSE(telegram.closed);
    EXPECT_EQ(textOf(telegram), ":");
}

static_assert(!std::is_polymorphic_v<Telegram>);

// Every telegram of the service, as it should be and with parameters missing, repeated, empty and
// wrong: whatever they mean to its receiver, the text is taken apart and put together in one way.
struct Form {
    const char* text;
    const char* type;
    Entries params;
    const char* written = nullptr;  // where that differs from `text`
};

void PrintTo(const Form& form, std::ostream* stream) {
    *stream << testing::PrintToString(std::string(form.text));
}

const Form forms[] = {
    {"change-scope:demo=INFO", "change-scope", {{"demo", "INFO"}}},
    {"change-scope:a=DEBUG|b=DEFAULT", "change-scope", {{"a", "DEBUG"}, {"b", "DEFAULT"}}},
    {"change-scope:b=DEBUG|a=INFO",
     "change-scope",
     {{"a", "INFO"}, {"b", "DEBUG"}},
     "change-scope:a=INFO|b=DEBUG"},
    {"change-scope:", "change-scope", {}},
    {"change-scope:a=INFO|a=WARN", "change-scope", {{"a", "INFO"}, {"a", "WARN"}}},
    {"change-scope:a=", "change-scope", {{"a", ""}}, "change-scope:a"},
    {"change-scope:a", "change-scope", {{"a", ""}}},
    {"change-scope:a=NOPE", "change-scope", {{"a", "NOPE"}}},
    {"change-scope:=INFO", "change-scope", {{"", "INFO"}}},
    {"change-scope:ack", "change-scope", {{"ack", ""}}},
    {"change-default-scope:scope=WARN", "change-default-scope", {{"scope", "WARN"}}},
    {"change-default-scope:", "change-default-scope", {}},
    {"change-default-scope:scope=WARN|scope=INFO",
     "change-default-scope",
     {{"scope", "WARN"}, {"scope", "INFO"}}},
    {"change-default-scope:scope=",
     "change-default-scope",
     {{"scope", ""}},
     "change-default-scope:scope"},
    {"change-default-scope:level=WARN", "change-default-scope", {{"level", "WARN"}}},
    {"change-default-scope:ack", "change-default-scope", {{"ack", ""}}},
    {"change-default-scope:error=invalid type/number of arguments encountered",
     "change-default-scope",
     {{"error", "invalid type/number of arguments encountered"}}},
    {"get-default-scope:", "get-default-scope", {}},
    {"get-default-scope:x=1", "get-default-scope", {{"x", "1"}}},
    {"default-scope:scope=INFO", "default-scope", {{"scope", "INFO"}}},
    {"get-messages:", "get-messages", {}},
    {"get-messages:x|y=", "get-messages", {{"x", ""}, {"y", ""}}, "get-messages:x|y"},
    {"get-evidence:", "get-evidence", {}},
    {"agent-list:", "agent-list", {}},
    {"agent-list:a=INFO|b=default", "agent-list", {{"a", "INFO"}, {"b", "default"}}},
    {"evidence-info:", "evidence-info", {}},
    {"evidence-info:end-of-reply", "evidence-info", {{"end-of-reply", ""}}},
    {"evidence-info:custom_format=false|enabled=true|id=file#0|max_scope=INFO|path=C:\\a b\\x.log",
     "evidence-info",
     {{"custom_format", "false"},
      {"enabled", "true"},
      {"id", "file#0"},
      {"max_scope", "INFO"},
      {"path", "C:\\a b\\x.log"}}},
    {"evidence-info:custom_format=false|enabled=false|id=net#0|max_scope=INVALID|"
     "peer=127.0.0.1:49733",
     "evidence-info",
     {{"custom_format", "false"},
      {"enabled", "false"},
      {"id", "net#0"},
      {"max_scope", "INVALID"},
      {"peer", "127.0.0.1:49733"}}},
    {"persist-config:", "persist-config", {}},
    {"persist-config:ack", "persist-config", {{"ack", ""}}},
    {"persist-config:error=a: b=c", "persist-config", {{"error", "a: b=c"}}},
    {"unsupported:", "unsupported", {}},
    {"discover-request:", "discover-request", {}},
    {"discover-request:id=7|name=demo", "discover-request", {{"id", "7"}, {"name", "demo"}}},
    {"discover-request:pid=1|pid=4242", "discover-request", {{"pid", "1"}, {"pid", "4242"}}},
    {"discover-request:name=demo|ip=127.0.0.1|pid=1|id=7",
     "discover-request",
     {{"id", "7"}, {"ip", "127.0.0.1"}, {"name", "demo"}, {"pid", "1"}},
     "discover-request:id=7|ip=127.0.0.1|name=demo|pid=1"},
    {"discover-request:id=abc|ip=|foo=1",
     "discover-request",
     {{"foo", "1"}, {"id", "abc"}, {"ip", ""}},
     "discover-request:foo=1|id=abc|ip"},
    {"hello:id=7|name=demo|pid=4242|tcpport=49731",
     "hello",
     {{"id", "7"}, {"name", "demo"}, {"pid", "4242"}, {"tcpport", "49731"}}},
    {"hello:name=demo|pid=4242|tcpport=49731",
     "hello",
     {{"name", "demo"}, {"pid", "4242"}, {"tcpport", "49731"}}},
    {"message:agent=demo|msg=started|pid=4242|scope=INFO|tid=77|when=1700000000123",
     "message",
     {{"agent", "demo"},
      {"msg", "started"},
      {"pid", "4242"},
      {"scope", "INFO"},
      {"tid", "77"},
      {"when", "1700000000123"}}},
    {"message:agent=demo|attr_keys|attr_values|msg|pid=1|scope=ERR|tid=2|when=-1",
     "message",
     {{"agent", "demo"},
      {"attr_keys", ""},
      {"attr_values", ""},
      {"msg", ""},
      {"pid", "1"},
      {"scope", "ERR"},
      {"tid", "2"},
      {"when", "-1"}}},
    // The edges of the form itself.
    {"ack:", "ack", {}},
    {":", "", {}},
    {"::", "", {{":", ""}}},
    {":=", "", {{"", ""}}, ":"},
    {"a:b:c", "a", {{"b:c", ""}}},
    {"x:a=1|a=2", "x", {{"a", "1"}, {"a", "2"}}},
    {"x:a==b", "x", {{"a", "=b"}}},
    {"x:a=b=c:d", "x", {{"a", "b=c:d"}}},
    {"x:a=", "x", {{"a", ""}}, "x:a"},
    {"x:||k|", "x", {{"k", ""}}, "x:k"},
    {"x:|", "x", {}, "x:"},
    {"x:|||||", "x", {}, "x:"},
    {"x:a||b", "x", {{"a", ""}, {"b", ""}}, "x:a|b"},
    {"x: a = b ", "x", {{" a ", " b "}}},
    {"|=x:a", "\x1F=x", {{"a", ""}}},
    {" x :a", " x ", {{"a", ""}}},
    {"x:b|B|a|A", "x", {{"A", ""}, {"B", ""}, {"a", ""}, {"b", ""}}, "x:A|B|a|b"},
    {"x:ab|a|abc|b", "x", {{"a", ""}, {"ab", ""}, {"abc", ""}, {"b", ""}}, "x:a|ab|abc|b"},
    {"x:\xE4=1|z=2|\x01=3", "x", {{"\x01", "3"}, {"z", "2"}, {"\xE4", "1"}}, "x:\x01=3|z=2|\xE4=1"},
    {"x:msg=two\r\nlines\n", "x", {{"msg", "two\r\nlines\n"}}},
    {"x:m=%s%n%1$s", "x", {{"m", "%s%n%1$s"}}},
};

class TelegramForm : public testing::TestWithParam<Form> {};

TEST_P(TelegramForm, IsTakenApartAndPutTogether) {
    const Form& form = GetParam();
    const Telegram telegram = parsed(form.text);
    EXPECT_EQ(telegram.type, form.type);
    EXPECT_EQ(entriesOf(telegram), form.params);
    const std::string expected = wire(form.written != nullptr ? form.written : form.text);
    EXPECT_EQ(textOf(telegram), expected);
    Telegram again;
    again.parse(expected);
    EXPECT_EQ(textOf(again), expected);
}

INSTANTIATE_TEST_SUITE_P(, TelegramForm, testing::ValuesIn(forms));

// The protocol's examples, byte for byte.

std::string bytes(const std::vector<unsigned char>& values) {
    return std::string(values.begin(), values.end());
}

TEST(TelegramExample, DiscoverRequest) {
    const std::string expected =
        bytes({0x64, 0x69, 0x73, 0x63, 0x6F, 0x76, 0x65, 0x72, 0x2D, 0x72, 0x65,
               0x71, 0x75, 0x65, 0x73, 0x74, 0x3A, 0x69, 0x64, 0x3D, 0x37, 0x1F,
               0x6E, 0x61, 0x6D, 0x65, 0x3D, 0x64, 0x65, 0x6D, 0x6F});
    ASSERT_EQ(expected.size(), 31u);
    Telegram request;
    request.parse(expected);
    EXPECT_EQ(request.type, "discover-request");
    EXPECT_EQ(entriesOf(request), (Entries{{"id", "7"}, {"name", "demo"}}));
    Telegram built;
    built.type = "discover-request";
    built.addParam("name", "demo");
    built.addParam("id", 7);
    EXPECT_EQ(textOf(built), expected);
}

TEST(TelegramExample, HelloWithItsKeysInOrderWhateverTheyWereAddedIn) {
    Telegram hello;
    hello.type = "hello";
    hello.addParam("tcpport", 49731);
    hello.addParam("name", "demo");
    hello.addParam("pid", 4242);
    EXPECT_EQ(textOf(hello), "hello:name=demo\x1Fpid=4242\x1Ftcpport=49731");
    hello.addParam("id", 7);
    const std::string text = textOf(hello);
    EXPECT_EQ(text, "hello:id=7\x1Fname=demo\x1Fpid=4242\x1Ftcpport=49731");
    EXPECT_EQ(text.size(), 43u);
}

TEST(TelegramExample, RequestsAndTheirReplies) {
    const std::pair<const char*, std::size_t> texts[] = {
        {"get-default-scope:", 18},
        {"default-scope:scope=INFO", 24},
        {"change-default-scope:scope=WARN", 31},
        {"change-default-scope:ack", 24},
    };
    for (const auto& [text, size] : texts) {
        const Telegram telegram = parsed(text);
        EXPECT_EQ(textOf(telegram), text);
        EXPECT_EQ(textOf(telegram).size(), size);
    }
}

TEST(TelegramExample, Message) {
    Telegram message;
    message.type = "message";
    message.addParam("agent", "demo");
    message.addParam("pid", std::uint32_t{4242});
    message.addParam("tid", std::uint32_t{77});
    message.addParam("when", std::int64_t{1700000000123});
    message.addParam("scope", "INFO");
    message.addParam("msg", "started");
    EXPECT_EQ(textOf(message),
              "message:agent=demo\x1Fmsg=started\x1Fpid=4242\x1Fscope=INFO\x1Ftid=77\x1F"
              "when=1700000000123");
    EXPECT_EQ(textOf(message).size(), 76u);
}

// Text that is no telegram.

class NoTelegram : public testing::TestWithParam<std::string> {};

TEST_P(NoTelegram, IsAParseErrorThatHoldsTheWholeText) {
    Telegram telegram = parsed("old:k=v");
    EXPECT_EQ(thrownBy<Telegram::ParseError>([&] { telegram.parse(GetParam()); }),
              "ParseError: Missing separator ':' in \"" + GetParam() + "\"");
    EXPECT_EQ(telegram.type, "");
    EXPECT_TRUE(telegram.params.empty());
    EXPECT_FALSE(telegram.closed);
}

INSTANTIATE_TEST_SUITE_P(, NoTelegram,
                         testing::Values("", "ack", "\x1F", "=", "a=b\x1F", "\"", "%s%n%1$s",
                                         "\xFF\xFE\x80", std::string("a\0b", 3),
                                         std::string("\0", 1), std::string(60, 'x')));

TEST(Telegram, LongTextThatIsNoTelegramIsHeldByTheErrorAsWell) {
    const std::string text(100000, '\x1F');
    EXPECT_EQ(thrownBy<Telegram::ParseError>([&] { Telegram().parse(text); }),
              "ParseError: Missing separator ':' in \"" + text + "\"");
}

TEST(Telegram, ZeroBytesAreBytesAsAnyOther) {
    const std::string text("t\0y:k\0=v\0v\x1F\0", 12);
    Telegram telegram;
    telegram.parse(text);
    EXPECT_EQ(telegram.type, std::string("t\0y", 3));
    EXPECT_EQ(entriesOf(telegram), (Entries{{std::string(1, '\0'), ""},
                                            {std::string("k\0", 2), std::string("v\0v", 3)}}));
    EXPECT_EQ(textOf(telegram), std::string("t\0y:\0\x1Fk\0=v\0v", 12));
}

TEST(Telegram, EveryByteGoesThroughInAValue) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != 0x1F) {
            all += static_cast<char>(byte);
        }
    }
    Telegram telegram;
    telegram.type = "x";
    telegram.addParam("k", all);
    Telegram again;
    again.parse(textOf(telegram));
    EXPECT_EQ(again.param("k"), all);
}

TEST(Telegram, SeparatorInATextMakesTwoParametersOfIt) {
    Telegram telegram;
    telegram.type = "message";
    telegram.addParam("msg",
                      "before\x1F"
                      "after=x");
    Telegram again;
    again.parse(textOf(telegram));
    EXPECT_EQ(entriesOf(again), (Entries{{"after", "x"}, {"msg", "before"}}));
}

TEST(Telegram, BarsAreNoSeparators) {
    Telegram telegram;
    telegram.parse(
        "message:attr_keys=a|b\x1F"
        "attr_values=1|2");
    EXPECT_EQ(telegram.param("attr_keys"), "a|b");
    EXPECT_EQ(telegram.param("attr_values"), "1|2");
}

TEST(Telegram, EntryWithoutKeyAndValueIsLostToTheReader) {
    Telegram telegram;
    telegram.type = "x";
    telegram.addParam("", "");
    telegram.addParam("a", "");
    EXPECT_EQ(textOf(telegram),
              "x:\x1F"
              "a");
    Telegram again;
    again.parse(textOf(telegram));
    EXPECT_EQ(entriesOf(again), (Entries{{"a", ""}}));
}

TEST(Telegram, ParsingReplacesWhatWasThere) {
    Telegram telegram = parsed("old:k=v|l=w");
    telegram.parse("new:m");
    EXPECT_EQ(textOf(telegram), "new:m");
}

TEST(Telegram, NoiseIsEitherATelegramThatComesBackOrAnError) {
    std::mt19937 random(1);
    const std::string alphabet("ab:=\x1F\0\xFF", 7);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t i = random() % 40; i > 0; --i) {
            text += alphabet[random() % alphabet.size()];
        }
        Telegram telegram;
        try {
            telegram.parse(text);
        } catch (const Telegram::ParseError&) {
            ASSERT_EQ(text.find(':'), std::string::npos);
            continue;
        }
        ASSERT_NE(text.find(':'), std::string::npos);
        // An empty entry is dropped by the next reader; nothing else changes.
        const std::string written = textOf(telegram);
        Telegram again;
        again.parse(written);
        Entries kept;
        for (const TelegramParams::Entry& entry : telegram.params) {
            if (entry != TelegramParams::Entry()) {
                kept.push_back(entry);
            }
        }
        ASSERT_EQ(again.type, telegram.type);
        ASSERT_EQ(entriesOf(again), kept);
    }
}

TEST(Telegram, ThousandsOfParametersInReverseOrder) {
    Telegram telegram;
    std::string text = "x:";
    for (int i = 4000; i > 0; --i) {
        text += std::to_string(100000 + i) + "\x1F";
    }
    telegram.parse(text);
    ASSERT_EQ(telegram.params.size(), 4000u);
    EXPECT_EQ(telegram.params.begin()->first, "100001");
}

// Parameters.

TEST(TelegramParam, NumbersAndTruthValuesAreTexts) {
    Telegram telegram;
    telegram.addParam("a", true);
    telegram.addParam("b", false);
    telegram.addParam("c", INT64_MIN);
    telegram.addParam("d", INT64_MAX);
    telegram.addParam("e", 0);
    telegram.addParam("f", std::uint32_t{4294967295});
    telegram.addParam("g", std::uint16_t{49731});
    telegram.addParam("h", "a literal");
    telegram.addParam("i", std::string("a string"));
    EXPECT_EQ(entriesOf(telegram), (Entries{{"a", "true"},
                                            {"b", "false"},
                                            {"c", "-9223372036854775808"},
                                            {"d", "9223372036854775807"},
                                            {"e", "0"},
                                            {"f", "4294967295"},
                                            {"g", "49731"},
                                            {"h", "a literal"},
                                            {"i", "a string"}}));
}

TEST(TelegramParam, AddingReplacesNothingAndKeepsTheOrderOfEqualKeys) {
    Telegram telegram;
    for (const char* const key : {"b", "a", "b", "c", "a", "b"}) {
        telegram.addParam(key, std::to_string(telegram.params.size()));
    }
    EXPECT_EQ(entriesOf(telegram),
              (Entries{{"a", "1"}, {"a", "4"}, {"b", "0"}, {"b", "2"}, {"b", "5"}, {"c", "3"}}));
}

TEST(TelegramParam, ValuesOfAKey) {
    const Telegram telegram = parsed("x:a=1|a=2|b");
    EXPECT_EQ(telegram.param("a"), "1");
    EXPECT_EQ(telegram.paramValues("a"), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(telegram.paramValues("b"), (std::vector<std::string>{""}));
    EXPECT_TRUE(telegram.paramValues("c").empty());
    EXPECT_TRUE(telegram.paramValues("").empty());
}

TEST(TelegramParam, MissingKeyIsToldFromAnEmptyValueByItsObject) {
    const Telegram telegram = parsed("x:b");
    EXPECT_EQ(telegram.param("b"), "");
    EXPECT_NE(&telegram.param("b"), &Telegram::noParam);
    EXPECT_EQ(telegram.param("a"), "");
    EXPECT_EQ(&telegram.param("a"), &Telegram::noParam);
    EXPECT_EQ(&telegram.param("c"), &Telegram().param("b"));
}

TEST(TelegramParam, IsThereOrNot) {
    const Telegram telegram = parsed("x:a=1|a=2|b");
    EXPECT_TRUE(telegram.hasParam("a"));
    EXPECT_TRUE(telegram.hasParam("b"));
    EXPECT_FALSE(telegram.hasParam("c"));
    EXPECT_FALSE(telegram.hasParam("A"));
    EXPECT_FALSE(telegram.hasParam(""));
}

TEST(TelegramParam, ErasingRemovesAllOfAKey) {
    Telegram telegram = parsed("x:a=1|a=2|b|c");
    EXPECT_EQ(telegram.eraseParam("a"), 2u);
    EXPECT_EQ(telegram.eraseParam("a"), 0u);
    EXPECT_EQ(telegram.eraseParam("none"), 0u);
    EXPECT_EQ(textOf(telegram), wire("x:b|c"));
    telegram.clearParams();
    EXPECT_EQ(textOf(telegram), "x:");
    EXPECT_EQ(telegram.type, "x");
}

TEST(TelegramParam, OnesThatWereRemovedLeaveNothingBehind) {
    Telegram telegram;
    telegram.parse(
        "t:a=a long value that has memory of its own\x1F"
        "b=2\x1F"
        "c=3\x1F"
        "d=4");
    EXPECT_EQ(telegram.eraseParam("b"), 1u);
    EXPECT_EQ(textOf(telegram),
              "t:a=a long value that has memory of its own\x1F"
              "c=3\x1F"
              "d=4");
    EXPECT_FALSE(telegram.hasParam("b"));
    telegram.addParam("bb", "");
    EXPECT_EQ(textOf(telegram),
              "t:a=a long value that has memory of its own\x1F"
              "bb\x1F"
              "c=3\x1F"
              "d=4");
    telegram.clearParams();
    EXPECT_TRUE(telegram.params.empty());
    EXPECT_EQ(telegram.params, Telegram().params);
    EXPECT_EQ(textOf(telegram), "t:");
    telegram.addParam("z", "");
    telegram.addParam("a", true);
    EXPECT_EQ(textOf(telegram), "t:a=true\x1Fz");
    EXPECT_EQ(telegram.params.size(), 2u);
    Telegram other;
    other.addParam("z", "");
    EXPECT_NE(telegram.params, other.params);
    other.addParam("a", "true");
    EXPECT_EQ(telegram.params, other.params);
}

TEST(TelegramParam, MayBeMadeOfAnother) {
    Telegram telegram;
    telegram.addParam("k", std::string(100, 'v'));
    for (int i = 0; i < 100; ++i) {
        telegram.addParam(telegram.params.begin()->second, telegram.param("k"));
    }
    EXPECT_EQ(telegram.paramValues(std::string(100, 'v')),
              std::vector<std::string>(100, std::string(100, 'v')));
}

TEST(TelegramParam, CopyIsATelegramOfItsOwn) {
    Telegram telegram = parsed("x:a=1");
    const Telegram copy = telegram;
    telegram.clearParams();
    EXPECT_EQ(textOf(copy), "x:a=1");
}

// What the process shares.

const std::string* const endOfReplyAheadOfMain = &vek::log::endOfReply;

TEST(TelegramWords, AreOneObjectEach) {
    EXPECT_EQ(vek::log::endOfReply, "end-of-reply");
    EXPECT_EQ(vek::log::unsupported, "unsupported");
    EXPECT_EQ(endOfReplyAheadOfMain, &vek::log::endOfReply);
}

// The errors.

template <class Error>
void expectIsOfTheTree(const Error& error, const std::string& text) {
    EXPECT_EQ(error.description(), text);
    EXPECT_EQ(error.what(), text);
    EXPECT_EQ(error.printableText(), text + "\n");
    const std::unique_ptr<vek::Exception> clone(error.clone());
    EXPECT_NE(dynamic_cast<Error*>(clone.get()), nullptr);
    EXPECT_THROW(clone->raise(), Error);
}

TEST(TelegramErrors, AreClassesOfTheirOwn) {
    expectIsOfTheTree(Telegram::ParseError("m"), "ParseError: m");
    expectIsOfTheTree(Telegram::LogicalError("m"), "LogicalError: m");
    static_assert(std::is_base_of_v<vek::Exception, Telegram::ParseError>);
    static_assert(!std::is_base_of_v<vek::ParseError, Telegram::ParseError>);
}

}  // namespace

#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/files.h"
#include "tests/vek/registry_fixture.h"

namespace {

using vek::RegistryKey;
using vek::RegistryOsError;
using vek::RegistryValue;
using vek::RegistryValueList;
using Bytes = std::vector<unsigned char>;

constexpr int READ = RegistryKey::READ;

// Another process changes the value "changing" without a pause.
class ChangingValue : public vek::test::RegistryTest {
  protected:
    ChangingValue() : writer(REGISTRY_WRITER, path, errorFile) {}

    ~ChangingValue() override {
        EXPECT_FALSE(writer.waitForEnd(0)) << "it failed: " << writer.exitCode();
        writer.terminate();
        DeleteFileA(errorFile.c_str());
    }

    // Which of the three values that the process writes this is; 3 if it is none of them.
    static int kindOf(const RegistryValue& value) {
        if (value.type == RegistryValue::TYPE_STRING) {
            return value.strings == std::list<std::string>{"ssssssssss"} ? 0 : 3;
        }
        if (value.type != RegistryValue::TYPE_BINARY) {
            return 3;
        }
        return value.bytes == Bytes(5000, 0xAB) ? 1 : value.bytes == Bytes(1500, 0xCD) ? 2 : 3;
    }

    // Looks again and again, for half a second at least, until all of `counts` are above 0; gives
    // up after ten seconds.
    template <class Look>
    static void watch(std::initializer_list<const int*> counts, Look look) {
        const ULONGLONG start = GetTickCount64();
        ULONGLONG passed = 0;
        bool complete = false;
        while (passed < 500 || (!complete && passed < 10000)) {
            look();
            complete = std::ranges::all_of(counts, [](const int* count) { return *count > 0; });
            passed = GetTickCount64() - start;
        }
        EXPECT_TRUE(complete);
    }

    const std::string errorFile = support::temporaryDirectory() + "\\registry_writer-" +
                                  std::to_string(GetCurrentProcessId());
    support::ChildProcess writer;
};

TEST_F(ChangingValue, IsReadWholeAlways) {
    const RegistryKey key = open(READ);
    ASSERT_TRUE(support::waitUntil([&] { return !key.listValues(false).empty(); }, 10000));
    int seen[4] = {};
    watch({&seen[0], &seen[1], &seen[2]}, [&] { ++seen[kindOf(key.readValue("changing"))]; });
    EXPECT_EQ(seen[3], 0);
}

TEST_F(ChangingValue, IsListedWholeAlways) {
    const RegistryKey key = open(READ);
    ASSERT_TRUE(support::waitUntil([&] { return !key.listValues(false).empty(); }, 10000));
    int seen[4] = {};
    watch({&seen[0], &seen[1], &seen[2]}, [&] {
        const RegistryValueList values = key.listValues(true);
        ASSERT_EQ(values.size(), 1u);
        ++seen[kindOf(values.front().second)];
    });
    EXPECT_EQ(seen[3], 0);
}

class ChangingNames : public vek::test::RegistryTest {};

TEST_F(ChangingNames, AreListedWholeAlways) {
    const std::string longName(250, 'n');
    makeSubkey("a");
    store("a", REG_SZ, "x");
    std::atomic<bool> done = false;
    std::thread changer([&] {
        while (!done) {
            makeSubkey(longName);
            store(longName, REG_BINARY, std::string(5000, 'd'));
            RegDeleteKeyA(raw, longName.c_str());
            RegDeleteValueA(raw, longName.c_str());
        }
    });
    const RegistryKey key = open(RegistryKey::READ);
    int failures = 0;
    for (int round = 0; round < 3000; ++round) {
        try {
            EXPECT_GE(key.listSubkeys().size(), 1u);
            EXPECT_GE(key.listValues(true).size(), 1u);
            EXPECT_GE(key.listValues(false).size(), 1u);
        } catch (const RegistryOsError&) {
            ++failures;
        }
    }
    done = true;
    changer.join();
    EXPECT_EQ(failures, 0);
}

}  // namespace

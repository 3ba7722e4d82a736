// The samples of docs/vek.md do what is said there, and are what is said there.
#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/documented_samples.h"
#include "vek/auxiliary/ini_reader.h"
#include "vek/base/format.h"
#include "vek/base/hex.h"
#include "vek/base/text.h"
#include "vek/base/units.h"
#include "vek/exception.h"
#include "vek/fs/dir.h"
#include "vek/fs/directories.h"
#include "vek/fs/operations.h"
#include "vek/fs/path_text.h"
#include "vek/fs/stream_file.h"
#include "vek/fs/temporary.h"
#include "vek/net/ip4_address.h"
#include "vek/net/tcp_buffer.h"
#include "vek/net/tcp_listener.h"
#include "vek/net/tcp_socket.h"
#include "vek/os/objects.h"
#include "vek/pal.h"
#include "vek/pathinfo.h"
#include "vek/proc/program.h"
#include "vek/registry.h"
#include "vek/thread/condition.h"
#include "vek/thread/runnable.h"
#include "vek/thread/scope_guard.h"
#include "vek/thread/thread.h"
#include "vek/time/clock.h"
#include "vek/time/date_time.h"

namespace {

TEST(VekSamples, AreThoseOfTheDocumentation) {
    support::expectSamplesIn(VEK_DOCUMENTATION, VEK_SAMPLES, 12);
}

class VekSample : public testing::Test {
  protected:
    const vek::VekPal pal{false, 0, 0, nullptr};
};

// ---- base ---------------------------------------------------------------------------------------

class ConfigError : public vek::ExceptionOf<ConfigError> {
  public:
    ConfigError(const std::string& message, const vek::Exception& causedBy)
        : ExceptionOf(message, causedBy) {}
};

void readConfig(const std::string& path) {
    try {
        vek::fs::StreamFile file;
        file.open(path, vek::fs::Access::read);
    } catch (const vek::Exception& failure) {
        throw ConfigError("no configuration", failure);
    }
}

TEST_F(VekSample, ExceptionHasItsCause) {
    try {
        readConfig("missing.conf");
        FAIL();
    } catch (const vek::Exception& failure) {
        EXPECT_NE(failure.getCause(), nullptr);
        const std::string text = failure.what();
        EXPECT_EQ(text.find("no configuration"), 0u) << text;
        EXPECT_NE(text.find("missing.conf"), std::string::npos) << text;
    }
}

TEST_F(VekSample, TextAndUnits) {
    std::string name = "  Tolmar ";
    vek::toLower(vek::trim(name));                                       // "tolmar"
    const std::string line = vek::format("%2$s: %1$d", 3, "disks");      // "disks: 3"
    const std::string bytes = vek::hexEncode("\x01\xAF", 2, ' ', true);  // "01 AF"
    const std::uint64_t limit = vek::parseFileSize("10 MB");             // in bytes
    const std::uint64_t pause = vek::parseDuration("1500 ms");           // in milliseconds
    EXPECT_EQ(name, "tolmar");
    EXPECT_EQ(line, "disks: 3");
    EXPECT_EQ(bytes, "01 AF");
    EXPECT_EQ(limit, 10u * 1024 * 1024);
    EXPECT_EQ(pause, 1500u);
}

// ---- os -----------------------------------------------------------------------------------------

TEST_F(VekSample, FlatLayer) {
    HANDLE event = nullptr;
    std::uint32_t waited = 0;
    if (vek::os::createEvent(&event, "sample", 0) == 1) {
        vek::os::setEvent(event);
        vek::os::waitObject(event, 1000, &waited);
        vek::os::closeObject(event);
    }
    EXPECT_NE(event, nullptr);
    EXPECT_EQ(waited, WAIT_OBJECT_0);
}

// ---- time ---------------------------------------------------------------------------------------

TEST_F(VekSample, Clocks) {
    vek::time::MonotonicClock deadline(true);
    deadline += 500;
    const std::int64_t left = deadline - vek::time::MonotonicClock(true);

    vek::time::DateTime now;
    now.setLocalNow();
    const std::string stamp = now.format("%Y-%m-%d %H:%M:%S");
    EXPECT_GT(left, 0);
    EXPECT_LE(left, 500);
    EXPECT_EQ(stamp.size(), 19u);
}

// ---- thread -------------------------------------------------------------------------------------

class Collector : public vek::thread::Runnable {
  public:
    void run() override {
        while (worker.wait(10)) {
            const vek::thread::ScopeGuard guard(changed);
            ++rounds;
            changed.wakeAll();
        }
    }

    // Blocks until `count` rounds are done.
    void waitForRounds(int count) {
        const vek::thread::ScopeGuard guard(changed);
        while (rounds < count) {
            changed.wait();
        }
    }

    vek::thread::Thread worker{"collector", *this};

  private:
    vek::thread::Condition changed;
    int rounds = 0;  // guarded by the mutex of `changed`
};

TEST_F(VekSample, WorkerThread) {
    Collector collector;
    collector.worker.start();
    collector.waitForRounds(3);
    collector.worker.terminate();
    collector.worker.join();
}

// ---- fs -----------------------------------------------------------------------------------------

TEST_F(VekSample, Files) {
    const std::string directory = vek::fs::makeTemporaryDirectory("vek");
    vek::fs::StreamFile file;
    file.open(directory + "\\notes.txt", vek::fs::Access::readWrite, vek::fs::createIfMissing);
    file.write("one\ntwo\n", 8);
    file.seek(0, vek::fs::Whence::begin);
    std::array<char, 3> first = {};
    file.read(first.data(), 3);
    file.close();

    std::vector<std::string> names;
    vek::fs::Dir dir;
    dir.open(directory);
    while (dir.next()) {
        names.push_back(dir.name());
    }
    dir.close();
    vek::fs::removeTree(directory);
    EXPECT_EQ(std::string(first.data(), 3), "one");
    EXPECT_EQ(names, std::vector<std::string>{"notes.txt"});
    EXPECT_FALSE(vek::fs::exists(directory));
}

// ---- auxiliary, pathinfo, registry --------------------------------------------------------------

TEST_F(VekSample, IniFile) {
    const std::string directory = vek::fs::makeTemporaryDirectory("vek");
    const std::string path = directory + "\\sample.ini";
    std::ofstream(path) << "Interval = 250 ms  # between two looks\n";
    std::string found;

    vek::aux::IniReader ini;
    ini.read(path);
    for (const auto& [key, value] : ini.entries()) {
        found += key + "=" + value;
    }
    EXPECT_EQ(found, "Interval=250 ms");
    vek::fs::removeTree(directory);
}

TEST_F(VekSample, NamedDirectories) {
    vek::PathInfo paths;
    paths.set("Root", "{WINDIR}\\tolmar");
    const std::string file = paths.get("Root", "tolmar.exe");
    EXPECT_NE(file.find("\\tolmar\\tolmar.exe"), std::string::npos) << file;
    EXPECT_EQ(file.find('{'), std::string::npos) << file;
}

TEST_F(VekSample, Registry) {
    vek::RegistryKey key(
        HKEY_CURRENT_USER, "Software\\sample",
        vek::RegistryKey::READ | vek::RegistryKey::WRITE | vek::RegistryKey::CREATE, 0);
    vek::RegistryValue port;
    port.type = vek::RegistryValue::TYPE_DWORD;
    port.number = 30451;
    key.writeValue("Port", port);
    const unsigned long read =
        vek::RegistryKey::readDword(HKEY_CURRENT_USER, "Software\\sample", "Port", 0, 0);
    EXPECT_EQ(read, 30451u);
    key.deleteValue("Port");
}

// ---- proc ---------------------------------------------------------------------------------------

TEST_F(VekSample, ChildProgram) {
    vek::proc::Program child;
    child.setProgram("hostname", true);  // found along PATH
    std::string output, errors;
    const bool succeeded = child.exchange(nullptr, &output, &errors);
    EXPECT_TRUE(succeeded) << errors;
    EXPECT_FALSE(vek::trimmed(output).empty());
}

// ---- net ----------------------------------------------------------------------------------------

TEST_F(VekSample, Frames) {
    vek::net::IP4Address address;
    address.fromString("127.0.0.1");
    vek::net::TCPListener listener(false);
    listener.bind(address);
    listener.localAddress(address);  // the port that the system has chosen
    listener.listen(1);

    vek::net::IPSocketT<vek::net::DataSocket> client(false, SOCK_STREAM, 0);
    client.connect(address);
    vek::net::TCPSocket server(listener.accept());

    vek::net::TCPBuffer sender(1024, 1024, &client);
    std::copy_n("hello", 5, sender.sendPayload());
    sender.commit(5);
    vek::net::TCPBuffer receiver(1024, 1024, &server);
    std::uint32_t length = 0;
    const char* const payload = receiver.nextMessage(length);
    EXPECT_EQ(std::string(payload, length), "hello");
}

}  // namespace

// What several threads of a program write to std::cerr while a test looks on.
#pragma once

#include <chrono>
#include <condition_variable>
#include <iostream>
#include <streambuf>
#include <string>

#include "vek/base/std_mutex.h"

namespace vek::test {

// Takes the place of std::cerr's buffer while it lives. Safe from any thread.
class SharedErrors {
  public:
    SharedErrors() { std::cerr.rdbuf(&buffer); }
    ~SharedErrors() { std::cerr.rdbuf(original); }
    SharedErrors(const SharedErrors&) = delete;
    SharedErrors& operator=(const SharedErrors&) = delete;

    std::string text() const {
        const vek::StdGuard guard(buffer.mutex);
        return buffer.written;
    }

    // Waits until `part` has been written. False if it isn't in time.
    bool waitFor(const std::string& part) const {
        vek::StdGuard held(buffer.mutex);
        return buffer.changed.wait_for(held.forWait(), std::chrono::seconds(60), [&] {
            return buffer.written.find(part) != std::string::npos;
        });
    }

  private:
    class Buffer : public std::streambuf {
      public:
        mutable vek::StdMutex mutex;
        mutable std::condition_variable changed;
        std::string written;

      protected:
        std::streamsize xsputn(const char* text, std::streamsize size) override {
            const vek::StdGuard guard(mutex);
            written.append(text, static_cast<std::size_t>(size));
            changed.notify_all();
            return size;
        }
        int_type overflow(int_type character) override {
            if (character != traits_type::eof()) {
                const char one = traits_type::to_char_type(character);
                xsputn(&one, 1);
            }
            return 0;
        }
    };

    Buffer buffer;
    std::streambuf* const original = std::cerr.rdbuf();
};

}  // namespace vek::test

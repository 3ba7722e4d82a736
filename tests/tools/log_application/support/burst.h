// Shared by the tests of processes that log much at once.
#pragma once

#include <string>

namespace log_application_test {

// The option of a process that logs nothing until somebody follows it.
inline constexpr const char* untilFollowed = "--wait-log-application";

// The mode of a ServiceProcess that logs 16 MB and ends. The sockets of a connection hold some 4
// MB, and the process ends only when all of it was sent, so it waits for somebody who reads on.
inline constexpr const char* moreThanSocketsHold = "burst 1000 16000";

// The same as a number of messages.
inline constexpr int messagesOfMoreThanSocketsHold = 1000;

// Expects that tail writes all messages, in order, of a process that logs `count` messages as fast
// as it can, each of `size` bytes if that isn't 0.
void expectNoneLostInAFile(int count, int size = 0);

}  // namespace log_application_test

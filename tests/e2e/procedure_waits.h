// The fixed waits of the update, in milliseconds: no run that meets them is shorter.
#pragma once

namespace waits {

constexpr double stopPoll = 1000;
constexpr double pause = 500;  // behind the move, and behind the copy
constexpr double startPoll = 1000;
constexpr double firstTest = 3000 + 100;
constexpr double watch = 3000 + 50 * 100;
constexpr double attempts = 30 * 500;  // between the 31 attempts
constexpr double goodUpdate = stopPoll + 2 * pause + startPoll + firstTest;
// The longest of all: the start is done, the new version never runs, and the roll-back runs out.
constexpr double failedRollBack = stopPoll + 2 * pause + startPoll + watch + attempts;

static_assert(goodUpdate == 6100);

}  // namespace waits

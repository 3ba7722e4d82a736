#include "vek/pal.h"

namespace vek {

namespace {

VekPal* currentPal = nullptr;

}  // namespace

VekPal::VekPal(bool /*handleQuit*/, int, int, void* /*quitContext*/) {
    currentPal = this;
}

VekPal::~VekPal() {
    currentPal = nullptr;
}

VekPal* VekPal::current() {
    return currentPal;
}

}  // namespace vek

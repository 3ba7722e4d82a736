// Doesn't compile: WRONG_CALL is a call whose arguments don't fit its format.
#include "vek/base/format.h"

void wrongCall() {
    WRONG_CALL;
}

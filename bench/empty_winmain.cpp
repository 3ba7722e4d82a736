// The program that does nothing: what every start of a static program costs.
#include "vek/base/windows.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    return 0;
}

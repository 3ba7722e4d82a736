// A program that does nothing: the cost of starting any static program.
#include "vek/base/windows.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    return 0;
}

// registry_writer KEY
//
// Changes the value "changing" of the key HKEY_CURRENT_USER\KEY without a pause: in turn a text of
// 10 characters 's', 5000 bytes 0xAB, and 1500 bytes 0xCD. Runs until it is ended, at most half a
// minute. Exit code 1 if a call fails.
#include <string>
#include <vector>

#include "vek/base/windows.h"

namespace {

constexpr DWORD limitMs = 30000;

bool write(HKEY key, DWORD type, const std::vector<unsigned char>& data) {
    return RegSetValueExA(key, "changing", 0, type, data.data(), static_cast<DWORD>(data.size())) ==
           ERROR_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    HKEY key = nullptr;
    if (argc != 2 ||
        RegOpenKeyExA(HKEY_CURRENT_USER, argv[1], 0, KEY_SET_VALUE, &key) != ERROR_SUCCESS) {
        return 1;
    }
    std::vector<unsigned char> text(10, 's');
    text.push_back(0);
    const std::vector<unsigned char> longest(5000, 0xAB);
    const std::vector<unsigned char> longer(1500, 0xCD);
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < limitMs) {
        if (!write(key, REG_SZ, text) || !write(key, REG_BINARY, longest) ||
            !write(key, REG_BINARY, longer)) {
            return 1;
        }
    }
    return 0;
}

// A child process for the tests: small, so that it starts quickly, and a GUI program, so that
// Windows creates no console for it.
//
//   proc_child exit CODE            ends at once
//   proc_child wait EVENT CODE      ends when the event is set
//   proc_child sleep MS CODE        ends later
//   proc_child say OUT ERR CODE     writes OUT and ERR to the two outputs
//   proc_child arguments            writes its command line, and each argument in brackets
//   proc_child environment          writes its variables, one on each line
//   proc_child directory            writes its working directory
//   proc_child affinity             writes its affinity mask
//   proc_child job                  writes 1 if it is in a job, else 0
//   proc_child streams              writes the system's types of its standard streams to FILE...
//   proc_child pipes                writes how many handles of pipes it has
//   proc_child copy                 copies its input to both outputs, piece by piece
//   proc_child count                writes the size of its input
//   proc_child flood SIZE           writes SIZE bytes to each output, the errors first, then counts
//   proc_child close-input CODE     closes its input, then writes "closed"
//   proc_child save FILE            copies its input into FILE
//
// A standard stream that can't be written gives exit code 97, a missing event 98.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vek/base/windows.h"

namespace {

constexpr DWORD longestWaitMs = 60000;
constexpr UINT noStream = 97;
constexpr UINT noEvent = 98;
constexpr UINT badUsage = 99;
constexpr DWORD pieceSize = 1000;

void writeAll(HANDLE out, const char* data, DWORD size) {
    while (size != 0) {
        DWORD written = 0;
        if (WriteFile(out, data, size, &written, nullptr) == 0) {
            ExitProcess(noStream);
        }
        data += written;
        size -= written;
    }
}

void writeText(DWORD stream, const std::string& text) {
    writeAll(GetStdHandle(stream), text.data(), static_cast<DWORD>(text.size()));
}

void print(const std::string& text) {
    writeText(STD_OUTPUT_HANDLE, text);
}

// Up to pieceSize bytes of the input; empty at its end.
std::string readPiece() {
    std::string piece(pieceSize, '\0');
    DWORD count = 0;
    if (ReadFile(GetStdHandle(STD_INPUT_HANDLE), piece.data(), pieceSize, &count, nullptr) == 0) {
        count = 0;
    }
    piece.resize(count);
    return piece;
}

UINT number(const char* text) {
    return static_cast<UINT>(std::strtoul(text, nullptr, 10));
}

void waitFor(const char* eventName) {
    const HANDLE event = OpenEventA(SYNCHRONIZE, FALSE, eventName);
    if (event == nullptr || WaitForSingleObject(event, longestWaitMs) != WAIT_OBJECT_0) {
        ExitProcess(noEvent);
    }
}

void printArguments(int argc, char** argv) {
    std::string text = std::string(GetCommandLineA()) + "\n";
    for (int i = 1; i < argc; ++i) {
        text += "[" + std::string(argv[i]) + "]\n";
    }
    print(text);
}

void printEnvironment() {
    char* const block = GetEnvironmentStringsA();
    std::string text;
    for (const char* entry = block; *entry != '\0'; entry += std::strlen(entry) + 1) {
        text += std::string(entry) + "\n";
    }
    print(text);
}

void printDirectory() {
    char path[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, path);
    print(path);
}

void printAffinity() {
    DWORD_PTR mask = 0;
    DWORD_PTR ofSystem = 0;
    GetProcessAffinityMask(GetCurrentProcess(), &mask, &ofSystem);
    print(std::to_string(mask));
}

void printJob() {
    BOOL isInJob = FALSE;
    IsProcessInJob(GetCurrentProcess(), nullptr, &isInJob);
    print(isInJob != FALSE ? "1" : "0");
}

void saveStreams(const char* path) {
    std::FILE* const file = std::fopen(path, "w");
    for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        std::fprintf(file, "%lu ", GetFileType(GetStdHandle(stream)));
    }
    std::fclose(file);
}

void printPipes() {
    unsigned count = 0;
    for (std::uintptr_t value = 4; value < 0x1000; value += 4) {
        if (GetFileType(reinterpret_cast<HANDLE>(value)) == FILE_TYPE_PIPE) {
            ++count;
        }
    }
    print(std::to_string(count));
}

void copyInput() {
    for (std::string piece = readPiece(); !piece.empty(); piece = readPiece()) {
        writeText(STD_OUTPUT_HANDLE, piece);
        writeText(STD_ERROR_HANDLE, piece);
    }
}

void printInputSize() {
    std::size_t size = 0;
    for (std::string piece = readPiece(); !piece.empty(); piece = readPiece()) {
        size += piece.size();
    }
    print(std::to_string(size));
}

void flood(std::size_t size) {
    writeText(STD_ERROR_HANDLE, std::string(size, 'e'));
    writeText(STD_OUTPUT_HANDLE, std::string(size, 'o'));
    printInputSize();
}

void saveInput(const char* path) {
    std::FILE* const file = std::fopen(path, "wb");
    for (std::string piece = readPiece(); !piece.empty(); piece = readPiece()) {
        std::fwrite(piece.data(), 1, piece.size(), file);
    }
    std::fclose(file);
}

UINT runCommand(const std::string& command, int argc, char** argv) {
    const char* const first = argc > 2 ? argv[2] : "";
    const char* const second = argc > 3 ? argv[3] : "";
    if (command == "exit") {
        return number(first);
    }
    if (command == "wait") {
        waitFor(first);
        return number(second);
    }
    if (command == "sleep") {
        Sleep(number(first));
        return number(second);
    }
    if (command == "say" && argc > 4) {
        writeText(STD_OUTPUT_HANDLE, first);
        writeText(STD_ERROR_HANDLE, second);
        return number(argv[4]);
    }
    if (command == "close-input") {
        CloseHandle(GetStdHandle(STD_INPUT_HANDLE));
        print("closed");
        return number(first);
    }
    if (command == "arguments") {
        printArguments(argc, argv);
    } else if (command == "environment") {
        printEnvironment();
    } else if (command == "directory") {
        printDirectory();
    } else if (command == "affinity") {
        printAffinity();
    } else if (command == "job") {
        printJob();
    } else if (command == "streams") {
        saveStreams(first);
    } else if (command == "pipes") {
        printPipes();
    } else if (command == "copy") {
        copyInput();
    } else if (command == "count") {
        printInputSize();
    } else if (command == "flood") {
        flood(number(first));
    } else if (command == "save") {
        saveInput(first);
    } else {
        return badUsage;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // Sets all 32 bits of the exit code and skips the runtime's exit handlers.
    ExitProcess(argc > 1 ? runCommand(argv[1], argc, argv) : badUsage);
}

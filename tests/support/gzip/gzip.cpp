// gzip.exe FILE: puts FILE.gz in the place of FILE. Ends with 0, or with a message and 1.
#include <exception>
#include <iostream>

#include "tests/support/gzip/gzip_file.h"

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "gzip: exactly one file is compressed at a time\n";
        return 1;
    }
    try {
        support::gzip(arguments[1]);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "gzip: " << error.what() << "\n";
        return 1;
    }
}

// spoolwatch: a Windows service that watches how many files wait in a directory.
//
//     spoolwatch              is how the service manager starts it
//     spoolwatch run          the same on a console, without the service manager
//     spoolwatch count DIR    prints the number of files in DIR. The service starts this as a child
#include <cstring>
#include <iostream>

#include "service.h"
#include "spool_watch.h"
#include "vek/exception.h"
#include "vek/log/configurator.h"
#include "vek/pal.h"

namespace {

int watch(bool asService) {
    vek::log::Configurator configurator(nullptr);
    configurator.configure("spoolwatch");
    SpoolWatch spoolWatch(readSettings());
    if (asService) {
        return runService("spoolwatch", spoolWatch);
    }
    spoolWatch.run();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        // Everything else of the framework lives shorter than this.
        const vek::VekPal pal(false, 0, 0, nullptr);
        if (argc == 1) {
            return watch(true);
        }
        if (argc == 2 && std::strcmp(argv[1], "run") == 0) {
            return watch(false);
        }
        if (argc == 3 && std::strcmp(argv[1], "count") == 0) {
            std::cout << countFiles(argv[2]) << '\n';
            return 0;
        }
        std::cerr << "usage: spoolwatch [run | count DIR]\n";
    } catch (const std::exception& failure) {
        std::cerr << "spoolwatch: " << failure.what() << '\n';
    }
    return 1;
}

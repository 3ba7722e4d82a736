// rotating_log.exe FILE COUNT GZIP_FOLDER: logs the numbers from 1 to COUNT into FILE, and rotates
// it beyond 4 KiB, with the gzip of GZIP_FOLDER. No archive falls away.
#include <cstdlib>
#include <iostream>
#include <string>

#include "vek/base/environment.h"
#include "vek/log/sinks/file_sink.h"
#include "vek/log/sinks/message_format.h"
#include "vek/pal.h"

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: rotating_log FILE COUNT GZIP_FOLDER\n";
        return 2;
    }
    const vek::VekPal pal(false, 0, 0, nullptr);
    vek::setEnv("PATH", arguments[3]);
    const int last = std::atoi(arguments[2]);
    vek::log::FileSinkConfig config(arguments[1]);
    config.enabled = true;
    config.rotate = true;
    config.max_archives = 1000;
    config.rotate_size = 4;
    config.format = vek::log::compileFormat("{msg}");
    vek::log::FileSink sink(config);
    for (int i = 1; i <= last; ++i) {
        sink.store(vek::log::Message("numbers", std::to_string(i), vek::log::INFO, 1));
    }
    return sink.isGood() ? 0 : 1;
}

// rotating_log.exe FILE COUNT: logs the numbers from 1 to COUNT into FILE, with more than 20
// rotations and the gzip that stands first along PATH. Nothing falls away.
#include <cstdlib>
#include <iostream>
#include <string>

#include "vek/log/file_sink.h"
#include "vek/log/message_format.h"
#include "vek/pal.h"

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: rotating_log FILE COUNT\n";
        return 2;
    }
    const vek::VekPal pal(false, 0, 0, nullptr);
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

#include "bench/measure.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace vek_bench {

Options options;

namespace {

bool anythingReported = false;

// The names of figures hold no character that JSON escapes.
void checkName(const std::string& name) {
    require(!name.empty() && name.find_first_of("\"\\\r\n") == std::string::npos,
            "not a name of a figure: " + name);
}

void printJson(const Figure& figure) {
    std::printf("{\"name\": \"%s\", \"unit\": \"%s\", \"better\": \"%s\", \"own\": %.6g",
                figure.name.c_str(), figure.unit, figure.higherIsBetter ? "higher" : "lower",
                figure.own);
    if (figure.other != 0) {
        std::printf(", \"other\": %.6g, \"other_name\": \"%s\"", figure.other, figure.otherName);
    }
    if (figure.target != 0) {
        std::printf(", \"target\": %.4g", figure.target);
    }
    std::printf("}\n");
}

void printText(const Figure& figure) {
    std::printf("%-50s %10.1f %s", figure.name.c_str(), figure.own, figure.unit);
    if (figure.other != 0) {
        std::printf("   %s %10.1f   ratio %5.2f", figure.otherName, figure.other,
                    figure.own / figure.other);
    }
    if (figure.target != 0) {
        std::printf("   (at %s %.2f)", figure.higherIsBetter ? "least" : "most", figure.target);
    }
    std::printf("\n");
}

void print(const Figure& figure) {
    checkName(figure.name);
    anythingReported = true;
    if (options.json) {
        printJson(figure);
    } else {
        printText(figure);
    }
    std::fflush(stdout);
}

bool parse(int argc, char** argv, std::size_t maxArguments) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--smoke") {
            options.smoke = true;
        } else if (argument == "--json") {
            options.json = true;
        } else if (argument.starts_with("-")) {
            std::fprintf(stderr, "unknown option '%s'; see --help\n", argv[i]);
            return false;
        } else {
            options.arguments.push_back(argument);
        }
    }
    if (options.arguments.size() > maxArguments) {
        std::fprintf(stderr, "unexpected argument '%s'; see --help\n",
                     options.arguments[maxArguments].c_str());
        return false;
    }
    return true;
}

}  // namespace

int runBenchmark(int argc, char** argv, const char* manual, void (*measureAll)(),
                 std::size_t maxArguments) {
    if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        std::printf(
            "%s\n  --smoke  measure a little of everything, in less than 2 seconds\n"
            "  --json   print each figure as a JSON object on a line of its own\n",
            manual);
        return 0;
    }
    if (!parse(argc, argv, maxArguments)) {
        return 2;
    }
    try {
        measureAll();
        require(anythingReported, "nothing was measured");
        return 0;
    } catch (const std::exception& error) {
        std::fflush(stdout);
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}

int repetitions(int full, int smoke) {
    return options.smoke ? smoke : full;
}

void report(const Figure& figure) {
    for (const double value : {figure.own, figure.other}) {
        require(std::isfinite(value) && value >= 0, figure.name + ": not a number");
    }
    require(figure.own > 0, figure.name + ": took no time");
    print(figure);
}

void reportValue(const std::string& name, double value, const char* unit) {
    require(std::isfinite(value) && value >= 0, name + ": not a number");
    print({.name = name, .own = value, .unit = unit});
}

void require(bool condition, const std::string& message) {
    if (!condition) {
        throw std::runtime_error(message);
    }
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace vek_bench

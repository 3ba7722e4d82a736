#include "vek/log/config/file_cost.h"

#include <algorithm>

namespace vek::log {

namespace {

// The bytes from `start` up to and including the next of `ends`, or up to the end of `text`.
std::size_t lengthThrough(std::string_view text, std::size_t start, std::string_view ends) {
    const std::size_t end = text.find(ends, start);
    return (end == std::string_view::npos ? text.size() : end + ends.size()) - start;
}

}  // namespace

ConfigCost costOfConfig(std::string_view text) {
    ConfigCost cost;
    bool quoted = false;
    std::size_t pieceStart = 0;
    const auto endPiece = [&](std::size_t end) {
        cost.longestPiece = std::max(cost.longestPiece, end - pieceStart);
        pieceStart = end;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char byte = text[i];
        if (byte == '"') {
            endPiece(i);
            quoted = !quoted;
        } else if (quoted) {
            if (byte == '\\') {
                endPiece(i);
                ++i;
            }
        } else if (byte == '#' || text.substr(i, 2) == "//") {
            endPiece(i);
            i += lengthThrough(text, i, "\n") - 1;
            endPiece(i + 1);
        } else if (text.substr(i, 2) == "/*") {
            // Of any length: the parser reads it byte by byte.
            endPiece(i);
            i += 1 + lengthThrough(text, i + 2, "*/");
            pieceStart = std::min(i + 1, text.size());
        } else if (byte == '=' || byte == ':') {
            ++cost.settings;
            endPiece(i);
        } else if (byte == ',') {
            ++cost.elements;
            endPiece(i);
        } else if (byte == '\n' || byte == ';') {
            endPiece(i);
        }
    }
    endPiece(text.size());
    return cost;
}

}  // namespace vek::log

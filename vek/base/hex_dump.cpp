#include "vek/base/hex_dump.h"

#include <iomanip>

namespace vek {

namespace {

// Keeps a stream's fill and flags, and sets them back at its end.
class StreamFormat {
  public:
    explicit StreamFormat(std::ostream& kept)
        : stream(kept), fill(kept.fill()), flags(kept.flags()) {}
    StreamFormat(const StreamFormat&) = delete;
    StreamFormat& operator=(const StreamFormat&) = delete;
    ~StreamFormat() {
        stream.fill(fill);
        stream.flags(flags);
    }

  private:
    std::ostream& stream;
    char fill;
    std::ios_base::fmtflags flags;
};

}  // namespace

std::ostream& operator<<(std::ostream& stream, const HexDump& dump) {
    const StreamFormat kept(stream);
    stream << std::setfill('0') << std::hex;
    if (dump.data == nullptr) {
        return stream << "nullptr";
    }
    const auto* bytes = static_cast<const unsigned char*>(dump.data);
    for (std::int32_t i = 0; i < dump.length; ++i) {
        if (i != 0) {
            if (dump.bytesPerLine > 0 && i % dump.bytesPerLine == 0) {
                stream << '\n';
            } else {
                stream << dump.separator;
            }
        }
        stream << std::right << std::setw(2) << static_cast<unsigned>(bytes[i]);
    }
    return stream;
}

}  // namespace vek

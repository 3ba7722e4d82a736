#include "vek/proc/exit_status.h"

#include <ostream>
#include <string>

namespace vek::proc {

std::ostream& operator<<(std::ostream& out, const ExitStatus& status) {
    out << "finished: " << (status.finished ? "1" : "0")
        << "\nkilled: " << (status.killed ? "1" : "0");
    if (status.finished && !status.killed) {
        out << "\ncode: " << std::to_string(status.code);
    }
    return out;
}

}  // namespace vek::proc

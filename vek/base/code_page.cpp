#include "vek/base/code_page.h"

#include "vek/base/windows.h"

namespace vek {

namespace {

LeadBytes leadBytesOf(UINT codePage) {
    LeadBytes leads;
    CPINFO info = {};
    if (GetCPInfo(codePage, &info) == 0) {
        return leads;
    }
    // Pairs of a first and a last lead byte, ended by a pair of zeros.
    for (int i = 0; i + 1 < MAX_LEADBYTES && info.LeadByte[i] != 0; i += 2) {
        for (unsigned byte = info.LeadByte[i]; byte <= info.LeadByte[i + 1]; ++byte) {
            leads.set(byte);
        }
    }
    return leads;
}

}  // namespace

const LeadBytes& ansiLeadBytes() {
    static const LeadBytes leads = leadBytesOf(CP_ACP);
    return leads;
}

}  // namespace vek

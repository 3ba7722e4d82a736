#include "vek/net/address.h"

namespace vek::net {

constinit const EmptyAddress emptyAddress;

void Address::prepare() {}

}  // namespace vek::net

#include "fleet/Limits.h"

#include <sys/resource.h>

#include <algorithm>
#include <string>

#include "fleet/Identity.h"

namespace quorvel::fleet {
namespace {

constexpr std::size_t kUsual = 64;

}  // namespace

void allowDescriptors(std::size_t more) {
    rlimit limit{};
    const rlim_t needed = more + kUsual;
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= needed) return;
    limit.rlim_cur = std::min(needed, limit.rlim_max);
    (void)setrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur >= needed) return;
    throw FleetError("this needs " + std::to_string(needed) + " open descriptors and the limit is " +
                     std::to_string(limit.rlim_max) + "; raise it (ulimit -n), or use fewer gateways");
}

}  // namespace quorvel::fleet

// The front ends that most calls pass through: reads of mapped parameters, applies, and questions for a node's mark.
#include "wifi/frontend/FrontEnd.h"

#include "wifi/bridge/Mapped.h"
#include "wifi/frontend/Steps.h"

namespace quorvel {
uint32_t checkContextNodeSet(void* ctx, uint32_t node, uint32_t limit, const Site& site) {
    // One test after the other: of both together the compiler makes a number first.
    if (ctx == nullptr) return steps::refuseNode(ctx, node, limit, site);
    if (node > limit) return steps::refuseNode(ctx, node, limit, site);
    SiteLog(site).done();
    return kPlatform.isContextSetMap(ctx, node);
}

uint32_t beginApply(void* ctx, const Site& site) {
    SiteLog(site).enter();
    if (const uint32_t result = steps::check(ctx, site)) return result;
    return steps::take(site);
}

uint32_t endApply(void* ctx, uint32_t result, uint32_t size, const Site& site) {
    result = steps::leave(result, site);
    if (result != 0) return result;
    (void)Quorvel_ContextInit(ctx, size);  // the values are written: a host that refuses the context changes nothing
    SiteLog(site).done();
    return kSuccess;
}

uint32_t apply(void* ctx, uint32_t (*impl)(void*), const ContextSite& site) {
    if (const uint32_t result = beginApply(ctx, site)) return result;
    return endApply(ctx, impl(ctx), site.size, site);
}

uint32_t apply(void* ctx, uint32_t i, uint32_t (*impl)(void*, uint32_t), const ContextSite& site) {
    if (const uint32_t result = beginApply(ctx, site)) return result;
    return endApply(ctx, impl(ctx, i), site.size, site);
}

uint32_t apply(void* ctx, uint32_t i, uint32_t j, uint32_t (*impl)(void*, uint32_t, uint32_t),
               const ContextSite& site) {
    if (const uint32_t result = beginApply(ctx, site)) return result;
    return endApply(ctx, impl(ctx, i, j), site.size, site);
}

[[gnu::flatten]] uint32_t getMapped(uint32_t i, void* out, const MappedSite& site) {
    const SiteLog log(site);
    if (const uint32_t result = steps::begin(out, site, log)) return result;
    return steps::end(readMapped(site.row, i, out), site, log);
}

[[gnu::flatten]] uint32_t getMapped(uint32_t i, char* buf, uint32_t len, const MappedSite& site) {
    const SiteLog log(site);
    if (const uint32_t result = steps::beginText(buf, len, site.minimum, site, log)) return result;
    return steps::end(readMapped(site.row, i, buf, len), site, log);
}

}  // namespace quorvel

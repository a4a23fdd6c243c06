#include "gateway/hostd/Plugin.h"

#include <dlfcn.h>

#include <cstdint>
#include <stdexcept>

namespace quorvel::hostd {
namespace {

std::string dlReason() {
    const char* const reason = dlerror();
    return reason == nullptr ? "unknown reason" : reason;
}

std::string symbolAt(Word word) {
    Dl_info info{};
    if (word == 0 || dladdr(reinterpret_cast<void*>(word), &info) == 0 || info.dli_sname == nullptr) return "";
    return info.dli_sname;
}

}  // namespace

Plugin::Plugin(const std::string& file, std::span<const Supplied> supplied) {
    // Never RTLD_DEEPBIND: it would bind the plug-in's sleep() to the C library's.
    handle_ = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) throw std::runtime_error("cannot load the plug-in: " + dlReason());
    const auto* const info = static_cast<const std::uint32_t*>(symbol("gQuorvelWiFiDataModelTableInfo"));
    const auto* const entries = static_cast<const TableEntry*>(symbol("gQuorvelWiFiDataModelTable"));
    if (info == nullptr || entries == nullptr) {
        throw std::runtime_error("cannot use the plug-in " + file + ": it exports no parameter table");
    }
    table_ = std::span(entries, info[3]);
    if (!supplied.empty()) (void)supply(handle_, supplied);  // a plug-in without such calls needs none
}

void Plugin::requireSleep(unsigned (*sleep)(unsigned)) const {
    const void* const bound = importOf(handle_, "sleep");
    if (bound == nullptr || bound == reinterpret_cast<void*>(sleep)) return;
    throw std::runtime_error(
        "cannot use the plug-in: its sleep() is not the host process's; load it without RTLD_DEEPBIND, and preload no "
        "library that defines sleep()");
}

void* Plugin::symbol(const std::string& name) const {
    return dlsym(handle_, name.c_str());
}

std::string Plugin::prefixOf(const DataModel& model, int node) {
    for (const int index : model.nodes()[static_cast<std::size_t>(node)].parameters) {
        const Parameter& parameter = model.parameters()[static_cast<std::size_t>(index)];
        for (const auto& [word, verb] : {std::pair(parameter.getter, "Get"), std::pair(parameter.setter, "Set")}) {
            const std::string symbol = symbolAt(word);
            const std::string tail = std::string(parameter.name) + verb;
            if (symbol.size() > tail.size() && symbol.ends_with(tail)) {
                return symbol.substr(0, symbol.size() - tail.size());
            }
        }
    }
    return "";
}

}  // namespace quorvel::hostd

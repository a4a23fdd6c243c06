// A host in small: loads the plug-in named and counts the entries of its table.
#include <QuorvelWiFiExports.h>
#include <QuorvelWiFiTable.h>
#include <dlfcn.h>

#include <cstdio>

int main(int, char** arguments) {
    void* plugin = dlopen(arguments[1], RTLD_NOW);
    if (plugin == nullptr) {
        (void)std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const auto* info = static_cast<const uint32_t*>(dlsym(plugin, "gQuorvelWiFiDataModelTableInfo"));
    const auto* table = static_cast<const quorvel::Table*>(dlsym(plugin, "gQuorvelWiFiDataModelTable"));
    if (info == nullptr || table == nullptr) return 1;
    uint32_t named = 0;
    while (named < info[3] && table->entries[named].words[1].text != nullptr)
        ++named;
    (void)std::printf("%u parameters\n", static_cast<unsigned>(named));
    return 0;
}

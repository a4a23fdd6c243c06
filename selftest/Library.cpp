#include "selftest/Library.h"

#include <dlfcn.h>
#include <link.h>

#include <stdexcept>

namespace quorvel::selftest {

Library::Library(const std::string& file) {
    handle_ = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* const reason = dlerror();
        throw std::runtime_error("cannot load the plug-in: " + std::string(reason == nullptr ? file : reason));
    }
    link_map* map = nullptr;
    Dl_info info{};
    if (dlinfo(handle_, RTLD_DI_LINKMAP, &map) == 0 && dladdr(map->l_ld, &info) != 0) base_ = info.dli_fbase;
}

bool Library::owns(Word address) const {
    Dl_info info{};
    return dladdr(reinterpret_cast<const void*>(address), &info) != 0 && info.dli_fbase == base_;
}

Word Library::find(const std::string& name) const {
    // The search goes on in the libraries that it needs; what is found there is not its own.
    const Word address = wordOf(dlsym(handle_, name.c_str()));
    return address != 0 && owns(address) ? address : 0;
}

std::size_t Library::sizeOf(const std::string& name) const {
    const Word address = find(name);
    Dl_info info{};
    void* found = nullptr;
    if (address == 0) return 0;
    if (dladdr1(reinterpret_cast<const void*>(address), &info, &found, RTLD_DL_SYMENT) == 0) return 0;
    const auto* const symbol = static_cast<const ElfW(Sym)*>(found);
    return symbol == nullptr ? 0 : symbol->st_size;
}

std::string Library::describe(Word address) const {
    if (address == 0) return "0";
    if (address < 4096) return std::to_string(address);
    Dl_info info{};
    if (!owns(address)) return "an address outside the library";
    (void)dladdr(reinterpret_cast<const void*>(address), &info);
    if (info.dli_sname == nullptr) return "an address of something that is not exported";
    const std::string name = info.dli_sname;
    return find(name) == address ? name : "an address within " + name;
}

std::string Library::text(Word address) const {
    return owns(address) ? "\"" + std::string(reinterpret_cast<const char*>(address)) + "\"" : describe(address);
}

}  // namespace quorvel::selftest

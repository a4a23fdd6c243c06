#include "agent/model/StateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "agent/model/OwnRules.h"

namespace quorvel::agent {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;

std::string textOf(const Json& object, const char* name, const std::string& fallback) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : fallback;
}

bool writeAll(int descriptor, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t wrote = write(descriptor, text.data() + done, text.size() - done);
        if (wrote < 0 && errno == EINTR) continue;
        if (wrote <= 0) return false;
        done += static_cast<std::size_t>(wrote);
    }
    return true;
}

// The name of a replaced file is on the disk only when its folder is.
void syncFolder(const std::string& file) {
    const std::string folder = file.substr(0, file.rfind('/'));
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    (void)fsync(descriptor);  // best effort: some file systems refuse it for folders
    close(descriptor);
}

}  // namespace

bool outlivesRestart(const Store& store, const std::string& row) {
    if (row.starts_with(kRequests)) return false;
    if (!row.starts_with(kSubscriptions)) return true;
    return store.flag(row, "Persistent");
}

std::string readState(const std::string& text, Store& store, std::optional<BootCause>& boot) {
    const Json state = Json::parse(text, nullptr, false);
    if (!state.is_object()) return "it is not a JSON object";
    const auto version = state.find("version");
    if (version == state.end() || *version != kVersion) return "it is not of version " + std::to_string(kVersion);
    store.load(state);
    const auto saved = state.find("boot");
    if (saved != state.end() && saved->is_object()) {
        boot = BootCause{textOf(*saved, "cause", "LocalReboot"), textOf(*saved, "commandKey", ""),
                         textOf(*saved, "reason", "")};
    }
    return "";
}

void StateFile::load(Store& store) {
    if (path_.empty()) return;
    std::ifstream in(path_);
    if (!in) return;
    std::ostringstream text;
    text << in.rdbuf();
    const std::string wrong = readState(text.str(), store, boot);
    if (wrong.empty()) return;
    throw std::runtime_error("the USP agent's state " + path_ + " cannot be used: " + wrong +
                             "; remove the file to start from the configuration");
}

std::string StateFile::save(const Store& store) {
    if (path_.empty()) return "";
    Json state{{"version", kVersion}};
    const Json saved = store.save([&store](const std::string& row) { return outlivesRestart(store, row); });
    state.update(saved);
    if (boot) state["boot"] = {{"cause", boot->cause}, {"commandKey", boot->commandKey}, {"reason", boot->reason}};
    const std::string text = state.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
    if (text == written_) return "";
    const std::string fresh = path_ + ".new";
    const int descriptor = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) return fresh + ": " + std::strerror(errno);
    const bool whole = fchmod(descriptor, 0600) == 0 && writeAll(descriptor, text) && fsync(descriptor) == 0;
    const std::string wrong = whole ? "" : fresh + ": " + std::strerror(errno);
    close(descriptor);
    if (!wrong.empty()) return wrong;
    if (std::rename(fresh.c_str(), path_.c_str()) != 0) return path_ + ": " + std::strerror(errno);
    syncFolder(path_);
    written_ = text;
    return "";
}

}  // namespace quorvel::agent
